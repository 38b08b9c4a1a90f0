// A private message bus in place of the system bus and the session bus.
#pragma once

#include <string>

#include <dbus/dbus.h>
#include <sys/types.h>

namespace tolvane::test {

/// A bus that this process uses as its system bus and its session bus until it ends.
class PrivateBus {
 public:
  static const PrivateBus& shared();
  [[nodiscard]] const std::string& address() const { return address_; }
  /// A new connection, which the caller closes. Throws std::runtime_error.
  [[nodiscard]] DBusConnection* connect() const;
  /// Stops the bus as if it hung, or lets it continue.
  void hang(bool isHung) const;
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;
  ~PrivateBus();

 private:
  PrivateBus();
  std::string folder_;
  std::string address_;
  pid_t daemon_ = -1;
};

}  // namespace tolvane::test
