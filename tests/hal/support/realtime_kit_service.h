// A private message bus in place of the system bus, with a service that grants real-time priority.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <dbus/dbus.h>
#include <sys/types.h>

namespace tolvane::test {

/// A bus that this process uses as the system bus until it ends.
class PrivateBus {
 public:
  static const PrivateBus& shared();
  [[nodiscard]] const std::string& address() const { return address_; }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;
  ~PrivateBus();

 private:
  PrivateBus();
  std::string folder_;
  std::string address_;
  pid_t daemon_ = -1;
};

/// The service, on the bus for its lifetime.
class RealtimeKitService {
 public:
  struct Behaviour {
    std::int32_t maxPriority;
    std::int64_t maxCpuUs;
    bool grants;
  };
  struct Request {
    std::uint64_t process;
    std::uint64_t thread;
    std::uint32_t priority;
    std::uint64_t cpuLimitUs;  // this process's limit when the request came
  };

  RealtimeKitService(const PrivateBus& bus, Behaviour behaviour);
  RealtimeKitService(const RealtimeKitService&) = delete;
  RealtimeKitService& operator=(const RealtimeKitService&) = delete;
  ~RealtimeKitService();

  [[nodiscard]] std::vector<Request> requests() const;

 private:
  void serve();
  DBusMessage* answerTo(DBusMessage* call);
  DBusMessage* property(DBusMessage* call) const;
  DBusMessage* makeRealtime(DBusMessage* call);

  const Behaviour behaviour_;
  DBusConnection* connection_;
  mutable std::mutex mutex_;
  std::vector<Request> requests_;  // guarded by mutex_
  bool stop_ = false;              // guarded by mutex_
  std::thread thread_;
};

}  // namespace tolvane::test
