#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "base/result.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl::remote {

/// False if the program was built without HTTP. [any-thread]
[[nodiscard]] bool isBuiltIn() noexcept;

struct LinkConfig {
  std::string address;  // HOST:PORT; IPv6 in brackets
  bool tls = false;
  std::string tlsAuthority;  // PEM file; empty: the system's
};

/// A WebSocket to a run, from a client. Every call waits. [main-thread]
class Link {
 public:
  virtual ~Link() = default;
  virtual void send(const std::string& text) = 0;
  /// The next text. Failure: none has come in this time, or the connection is lost. No limit: waits for good.
  [[nodiscard]] virtual Result<std::string, Failure> receive(std::optional<std::chrono::seconds> limit) = 0;
};

/// Connects. Failure: the address is none (usage), or nobody answers there as a run does. [main-thread]
[[nodiscard]] Result<std::unique_ptr<Link>, Failure> openLink(const LinkConfig& config);

}  // namespace tolvane::ctl::remote
