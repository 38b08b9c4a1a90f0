// Which web pages may talk to us. A browser lets any page open a WebSocket to any machine, and a page's owner
// can let the name of his own machine mean ours ("rebinding"). Only the Host and Origin headers tell.
#pragma once

#include <string_view>

namespace tolvane::ctl::http {

/// True if a Host header names this machine in a way that nobody else's name can: a numeric address,
/// "localhost", or the machine's own name, with or without ".local"; each with or without a port.
/// [any-thread]
[[nodiscard]] bool isOwnHost(std::string_view host);

/// True if a page of this origin came from the server that the Host header names. A program that is no
/// browser sends no origin, which is empty here. [any-thread]
[[nodiscard]] bool isOwnOrigin(std::string_view origin, std::string_view host);

}  // namespace tolvane::ctl::http
