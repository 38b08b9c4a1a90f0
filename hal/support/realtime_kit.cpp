#include "hal/support/realtime_kit.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>

#include <dbus/dbus.h>
#include <sys/resource.h>
#include <unistd.h>

#include "hal/support/realtime.h"
#include "hal/support/shared_library.h"
#include "hal/support/thread.h"

namespace tolvane::hal {

namespace {

constexpr char kName[] = "org.freedesktop.RealtimeKit1";
constexpr char kPath[] = "/org/freedesktop/RealtimeKit1";
constexpr int kAnswerTimeoutMs = 1000;
// The highest priority that RealtimeKit grants by default.
constexpr unsigned kDefaultMaxPriority = 20;

#define TOLVANE_DBUS_FUNCTIONS(FUNCTION)              \
  FUNCTION(dbus_threads_init_default)                 \
  FUNCTION(dbus_bus_get_private)                      \
  FUNCTION(dbus_connection_set_exit_on_disconnect)    \
  FUNCTION(dbus_connection_close)                     \
  FUNCTION(dbus_connection_unref)                     \
  FUNCTION(dbus_connection_send_with_reply_and_block) \
  FUNCTION(dbus_message_new_method_call)              \
  FUNCTION(dbus_message_append_args)                  \
  FUNCTION(dbus_message_unref)                        \
  FUNCTION(dbus_message_iter_init)                    \
  FUNCTION(dbus_message_iter_recurse)                 \
  FUNCTION(dbus_message_iter_get_arg_type)            \
  FUNCTION(dbus_message_iter_get_basic)

struct DBus {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member cannot be declared in parentheses
#define TOLVANE_DBUS_MEMBER(name) decltype(&::name) name = nullptr;
  TOLVANE_DBUS_FUNCTIONS(TOLVANE_DBUS_MEMBER)
#undef TOLVANE_DBUS_MEMBER
};

std::optional<DBus> loadDBus() {
  SharedLibrary file("libdbus-1.so.3");
  DBus loaded;
#define TOLVANE_DBUS_RESOLVE(name) file.resolve(#name, loaded.name);
  TOLVANE_DBUS_FUNCTIONS(TOLVANE_DBUS_RESOLVE)
#undef TOLVANE_DBUS_RESOLVE
  if (!file.isComplete() || loaded.dbus_threads_init_default() == 0) return std::nullopt;
  return loaded;
}

/// RealtimeKit, reached through a private connection to the system bus.
class RealtimeKit {
 public:
  explicit RealtimeKit(const DBus& dbus)
      : dbus_(dbus), connection_(dbus.dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr)) {
    if (connection_ != nullptr) dbus_.dbus_connection_set_exit_on_disconnect(connection_, 0);
  }
  RealtimeKit(const RealtimeKit&) = delete;
  RealtimeKit& operator=(const RealtimeKit&) = delete;
  ~RealtimeKit() {
    if (connection_ == nullptr) return;
    dbus_.dbus_connection_close(connection_);
    dbus_.dbus_connection_unref(connection_);
  }

  /// An integer property of the service.
  std::optional<std::int64_t> property(const char* name) {
    const Message call = newCall("org.freedesktop.DBus.Properties", "Get");
    const char* interface = kName;
    if (!call || dbus_.dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING,
                                                &name, DBUS_TYPE_INVALID) == 0) {
      return std::nullopt;
    }
    const Message answer = send(call);
    return answer ? integerIn(answer) : std::nullopt;
  }

  bool makeRealtime(pid_t thread, std::uint32_t priority) {
    const Message call = newCall(kName, "MakeThreadRealtimeWithPID");
    const auto processArgument = static_cast<std::uint64_t>(getpid());
    const auto threadArgument = static_cast<std::uint64_t>(thread);
    return call &&
           dbus_.dbus_message_append_args(call.get(), DBUS_TYPE_UINT64, &processArgument, DBUS_TYPE_UINT64,
                                          &threadArgument, DBUS_TYPE_UINT32, &priority,
                                          DBUS_TYPE_INVALID) != 0 &&
           send(call) != nullptr;
  }

 private:
  struct Unref {
    const DBus* dbus;
    void operator()(DBusMessage* message) const noexcept { dbus->dbus_message_unref(message); }
  };
  using Message = std::unique_ptr<DBusMessage, Unref>;

  Message newCall(const char* interface, const char* method) {
    return {dbus_.dbus_message_new_method_call(kName, kPath, interface, method), {&dbus_}};
  }

  Message send(const Message& call) {
    if (connection_ == nullptr) return {nullptr, {&dbus_}};
    return {
        dbus_.dbus_connection_send_with_reply_and_block(connection_, call.get(), kAnswerTimeoutMs, nullptr),
        {&dbus_}};
  }

  /// The integer in the variant that is the message's only argument.
  std::optional<std::int64_t> integerIn(const Message& message) {
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
  DBusConnection* connection_;
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
  static const std::optional<DBus> kDBus = loadDBus();
  if (!kDBus) return false;
  RealtimeKit kit(*kDBus);
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
