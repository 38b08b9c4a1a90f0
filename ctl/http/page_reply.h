#pragma once

#include <cstddef>
#include <string_view>

struct lws;

namespace tolvane::ctl::http {

/// The value of a header of the request that is answered; empty: none, or one that is too long to be honest.
/// `token` is the library's number of the header.
[[nodiscard]] std::string_view headerOf(lws* socket, int token, char (&buffer)[300]);

/// Begins the answer to an HTTP request for a path. Returns the library's "go on" (0) or "close" (not 0).
/// `sent` belongs to the connection. Called by the server's thread.
[[nodiscard]] int beginReply(lws* socket, std::string_view path, std::size_t& sent);

/// Sends the next part of the page. Likewise.
[[nodiscard]] int continueReply(lws* socket, std::size_t& sent);

}  // namespace tolvane::ctl::http
