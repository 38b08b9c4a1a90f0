// A service that grants real-time priority, on a private bus.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <dbus/dbus.h>

#include "hal/support/private_bus.h"

namespace tolvane::test {

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
