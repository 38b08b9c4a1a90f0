#pragma once

#include <cstdint>
#include <string>

#include <netinet/in.h>

#include "base/result.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

/// Where a door listens. IPv4 addresses are kept as such.
struct ListenAddress {
  sockaddr_storage address{};
  socklen_t length = 0;

  /// True if only programs on this machine can reach it.
  [[nodiscard]] bool isLoopback() const noexcept;
  /// "127.0.0.1:9000", "[::1]:9000".
  [[nodiscard]] std::string text() const;
};

/// Reads "[ADDRESS:]PORT". The address is numeric, IPv6 in brackets, or "localhost"; without one it is
/// 127.0.0.1. Port 0 is one of the system's choice. Failure: anything else (usage). [any-thread]
[[nodiscard]] Result<ListenAddress, Failure> parseListenAddress(const std::string& text);

/// "192.0.2.7:9000", for messages. [any-thread]
[[nodiscard]] std::string textOf(const sockaddr_storage& address);

}  // namespace tolvane::ctl
