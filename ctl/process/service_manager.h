#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tolvane::ctl {

/// Reports to the service manager that started this process, by the protocol of sd_notify(3): a datagram of
/// assignments to the socket that $NOTIFY_SOCKET names. Without that variable nothing is sent. No call
/// blocks. [main-thread]
class ServiceManager {
 public:
  /// Reads $NOTIFY_SOCKET, $WATCHDOG_USEC and $WATCHDOG_PID.
  ServiceManager();
  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;
  ~ServiceManager();

  [[nodiscard]] bool isListening() const noexcept { return socket_ >= 0; }

  /// The service manager ends a process that has not called tellAlive() for so long. None: it does not watch.
  [[nodiscard]] std::optional<std::chrono::microseconds> watchdog() const noexcept { return watchdog_; }

  /// Each returns false if the report was not taken: no manager listens, or its queue is full. `status` is
  /// one line for people and is shown escaped.
  /// Gives the start so much time from now, if the manager's own limit is up by then.
  bool askForTime(std::chrono::microseconds time) const;
  bool tellReady(std::string_view status) const;
  bool tellStatus(std::string_view status) const;
  bool tellAlive() const;
  bool tellStopping() const;

 private:
  [[nodiscard]] bool send(const std::string& assignments) const;

  int socket_ = -1;
  std::optional<std::chrono::microseconds> watchdog_;
};

}  // namespace tolvane::ctl
