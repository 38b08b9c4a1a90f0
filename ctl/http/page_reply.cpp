#include "ctl/http/page_reply.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <libwebsockets.h>

#include "ctl/http/access.h"
#include "ctl/http/page.h"

namespace tolvane::ctl::http {

namespace {

constexpr std::pair<const char*, const char*> kHeaders[] = {
    {"content-security-policy:",
     "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; img-src data:; "
     "connect-src 'self' ws: wss:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"x-content-type-options:", "nosniff"},
    {"referrer-policy:", "no-referrer"},
    {"cache-control:", "no-cache"},
};

using Bytes = unsigned char;

int refuse(lws* socket, unsigned status, const char* text) {
  if (lws_return_http_status(socket, status, text) != 0) return -1;
  return lws_http_transaction_completed(socket);
}

/// False: no room.
bool addHeaders(lws* socket, Bytes** at, Bytes* end) {
  if (lws_add_http_common_headers(socket, HTTP_STATUS_OK, "text/html; charset=utf-8", page().size(), at,
                                  end) != 0)
    return false;
  return std::all_of(std::begin(kHeaders), std::end(kHeaders), [&](const auto& header) {
    return lws_add_http_header_by_name(socket, reinterpret_cast<const Bytes*>(header.first),
                                       reinterpret_cast<const Bytes*>(header.second),
                                       static_cast<int>(std::strlen(header.second)), at, end) == 0;
  });
}

}  // namespace

std::string_view headerOf(lws* socket, int token, char (&buffer)[300]) {
  const int length = lws_hdr_copy(socket, buffer, sizeof buffer, static_cast<lws_token_indexes>(token));
  return length > 0 ? std::string_view(buffer, static_cast<std::size_t>(length)) : std::string_view();
}

int beginReply(lws* socket, std::string_view path, std::size_t& sent) {
  char host[300];
  if (!isOwnHost(headerOf(socket, WSI_TOKEN_HOST, host)))
    return refuse(socket, HTTP_STATUS_FORBIDDEN, "Use this machine's address or its own name.");
  if (lws_hdr_total_length(socket, WSI_TOKEN_GET_URI) == 0)
    return refuse(socket, HTTP_STATUS_METHOD_NOT_ALLOWED, nullptr);
  if (path != "/") return refuse(socket, HTTP_STATUS_NOT_FOUND, nullptr);
  std::array<Bytes, LWS_PRE + 2048> buffer;
  Bytes* const begin = buffer.data() + LWS_PRE;
  Bytes* at = begin;
  Bytes* const end = buffer.data() + buffer.size() - 1;
  if (!addHeaders(socket, &at, end) || lws_finalize_write_http_header(socket, begin, &at, end) != 0)
    return -1;
  sent = 0;
  lws_callback_on_writable(socket);
  return 0;
}

int continueReply(lws* socket, std::size_t& sent) {
  constexpr std::size_t kPart = 16384;
  std::array<Bytes, LWS_PRE + kPart> buffer;
  const std::string_view part = page().substr(sent, kPart);
  std::copy(part.begin(), part.end(), buffer.begin() + LWS_PRE);
  sent += part.size();
  const bool isLast = sent == page().size();
  const int count =
      lws_write(socket, buffer.data() + LWS_PRE, part.size(), isLast ? LWS_WRITE_HTTP_FINAL : LWS_WRITE_HTTP);
  if (count < static_cast<int>(part.size())) return -1;
  if (isLast) return lws_http_transaction_completed(socket);
  lws_callback_on_writable(socket);
  return 0;
}

}  // namespace tolvane::ctl::http
