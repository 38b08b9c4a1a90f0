#include "ctl/http/access.h"

#include <algorithm>
#include <string>

#include <arpa/inet.h>
#include <unistd.h>

namespace tolvane::ctl::http {

namespace {

/// ASCII only, whatever the locale.
char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isSameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char left, char right) { return lower(left) == lower(right); });
}

bool isNumeric(int family, const std::string& host) {
  in6_addr address{};
  return ::inet_pton(family, host.c_str(), &address) == 1;
}

bool isPort(std::string_view text) {
  return !text.empty() && text.size() <= 5 && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Takes ":PORT" away. False: what follows the colon is no port.
bool dropPort(std::string_view& host) {
  const std::size_t colon = host.rfind(':');
  if (colon == std::string_view::npos || host.ends_with(']')) return true;
  if (!isPort(host.substr(colon + 1))) return false;
  host = host.substr(0, colon);
  return true;
}

bool isOwnName(std::string_view host) {
  char name[256] = "";
  if (::gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return false;
  return isSameName(host, name) || isSameName(host, std::string(name) + ".local");
}

}  // namespace

bool isOwnHost(std::string_view host) {
  if (!dropPort(host)) return false;
  if (host.size() > 2 && host.front() == '[' && host.back() == ']')
    return isNumeric(AF_INET6, std::string(host.substr(1, host.size() - 2)));
  return isNumeric(AF_INET, std::string(host)) || isSameName(host, "localhost") || isOwnName(host);
}

bool isOwnOrigin(std::string_view origin, std::string_view host) {
  if (origin.empty()) return true;
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (origin.starts_with(scheme)) return isSameName(origin.substr(scheme.size()), host);
  }
  return false;
}

}  // namespace tolvane::ctl::http
