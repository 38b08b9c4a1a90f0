#include "hal/support/realtime_kit.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

#include <sys/resource.h>
#include <unistd.h>

#include "hal/support/dbus.h"
#include "hal/support/realtime.h"
#include "hal/support/thread.h"

namespace tolvane::hal {

namespace {

constexpr char kName[] = "org.freedesktop.RealtimeKit1";
constexpr char kPath[] = "/org/freedesktop/RealtimeKit1";
constexpr std::chrono::milliseconds kAnswerLimit{1000};
// The highest priority that RealtimeKit grants by default.
constexpr unsigned kDefaultMaxPriority = 20;

/// RealtimeKit, reached through a private connection to the system bus.
class RealtimeKit {
 public:
  explicit RealtimeKit(const DBus& dbus)
      : dbus_(dbus), bus_(dbus, dbus.dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr)) {}

  /// An integer property of the service.
  std::optional<std::int64_t> property(const char* name) {
    const BusMessage call = bus_.newCall(kName, kPath, DBUS_INTERFACE_PROPERTIES, "Get");
    const char* interface = kName;
    if (!call || dbus_.dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING,
                                                &name, DBUS_TYPE_INVALID) == 0) {
      return std::nullopt;
    }
    const BusMessage answer = bus_.ask(call, kAnswerLimit);
    return answer ? integerIn(answer) : std::nullopt;
  }

  bool makeRealtime(pid_t thread, std::uint32_t priority) {
    const BusMessage call = bus_.newCall(kName, kPath, kName, "MakeThreadRealtimeWithPID");
    const auto processArgument = static_cast<std::uint64_t>(getpid());
    const auto threadArgument = static_cast<std::uint64_t>(thread);
    return call &&
           dbus_.dbus_message_append_args(call.get(), DBUS_TYPE_UINT64, &processArgument, DBUS_TYPE_UINT64,
                                          &threadArgument, DBUS_TYPE_UINT32, &priority,
                                          DBUS_TYPE_INVALID) != 0 &&
           bus_.ask(call, kAnswerLimit) != nullptr;
  }

 private:
  /// The integer in the variant that is the message's only argument.
  std::optional<std::int64_t> integerIn(const BusMessage& message) {
    DBusMessageIter argument;
    DBusMessageIter value;
    if (dbus_.dbus_message_iter_init(message.get(), &argument) == 0 ||
        dbus_.dbus_message_iter_get_arg_type(&argument) != DBUS_TYPE_VARIANT) {
      return std::nullopt;
    }
    dbus_.dbus_message_iter_recurse(&argument, &value);
    DBusBasicValue basic{};
    switch (dbus_.dbus_message_iter_get_arg_type(&value)) {
      case DBUS_TYPE_INT32:
        dbus_.dbus_message_iter_get_basic(&value, &basic);
        return basic.i32;
      case DBUS_TYPE_INT64:
        dbus_.dbus_message_iter_get_basic(&value, &basic);
        return basic.i64;
      default:
        return std::nullopt;
    }
  }

  const DBus& dbus_;
  BusConnection bus_;
};

bool limitRealtimeCpu(std::int64_t limitUs) {
  rlimit limit{};
  if (getrlimit(RLIMIT_RTTIME, &limit) != 0) return false;
  const auto allowed = static_cast<rlim_t>(limitUs);
  limit.rlim_max = std::min(limit.rlim_max, allowed);
  limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max);
  return setrlimit(RLIMIT_RTTIME, &limit) == 0;
}

}  // namespace

bool askRealtimeKit(pid_t thread, unsigned priority) {
  const DBus* const library = dbus();
  if (library == nullptr) return false;
  RealtimeKit kit(*library);
  const auto maxPriority = kit.property("MaxRealtimePriority");
  const auto maxCpuUs = kit.property("RTTimeUSecMax");
  if (!maxPriority || !maxCpuUs || *maxPriority < 1 || *maxCpuUs < 1) return false;
  if (!limitRealtimeCpu(*maxCpuUs)) return false;
  return kit.makeRealtime(thread, static_cast<std::uint32_t>(std::min<std::int64_t>(priority, *maxPriority)));
}

void requestRealtime() {
  if (becomeRealtime()) return;
  // If the system has no thread left to ask on, the calling thread keeps its priority, which is reported.
  static_cast<void>(
      runDetached("tolvane-rtkit", [thread = gettid()] { askRealtimeKit(thread, kDefaultMaxPriority); }));
}

}  // namespace tolvane::hal
