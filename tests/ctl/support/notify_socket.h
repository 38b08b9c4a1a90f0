#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "ctl/support/files.h"

namespace tolvane::test {

/// A service manager's end of the sd_notify(3) protocol: a socket that keeps the reports in order.
class NotifySocket {
 public:
  enum class Kind { file, abstract };

  explicit NotifySocket(Kind kind = Kind::file);
  NotifySocket(const NotifySocket&) = delete;
  NotifySocket& operator=(const NotifySocket&) = delete;
  ~NotifySocket();

  /// The value of $NOTIFY_SOCKET.
  [[nodiscard]] const std::string& address() const { return address_; }

  /// Takes reports until one is equal to `report`. Returns false after a minute.
  bool waitFor(const std::string& report);

  /// Takes the reports that arrive in this time and returns how many are equal to `report`.
  int count(const std::string& report, std::chrono::milliseconds time);

  /// All reports taken so far.
  [[nodiscard]] const std::vector<std::string>& reports() const { return reports_; }
  [[nodiscard]] bool has(const std::string& report) const;

 private:
  bool takeUntil(std::chrono::steady_clock::time_point end,
                 const std::function<bool(const std::string&)>& isEnough);

  TemporaryFolder folder_;
  std::string address_;
  int socket_ = -1;
  std::vector<std::string> reports_;
};

}  // namespace tolvane::test
