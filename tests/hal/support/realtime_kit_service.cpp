#include "hal/support/realtime_kit_service.h"

#include <string_view>

#include <sys/resource.h>

namespace tolvane::test {

RealtimeKitService::RealtimeKitService(const PrivateBus& bus, Behaviour behaviour)
    : behaviour_(behaviour), connection_(bus.connect()) {
  dbus_bus_request_name(connection_, "org.freedesktop.RealtimeKit1", 0, nullptr);
  thread_ = std::thread([this] { serve(); });
}

RealtimeKitService::~RealtimeKitService() {
  {
    const std::lock_guard lock(mutex_);
    stop_ = true;
  }
  thread_.join();
  dbus_connection_close(connection_);
  dbus_connection_unref(connection_);
}

std::vector<RealtimeKitService::Request> RealtimeKitService::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void RealtimeKitService::serve() {
  for (;;) {
    {
      const std::lock_guard lock(mutex_);
      if (stop_) return;
    }
    dbus_connection_read_write(connection_, 10);
    while (DBusMessage* const call = dbus_connection_pop_message(connection_)) {
      if (DBusMessage* const answer = answerTo(call)) {
        dbus_connection_send(connection_, answer, nullptr);
        dbus_message_unref(answer);
      }
      dbus_message_unref(call);
    }
  }
}

DBusMessage* RealtimeKitService::answerTo(DBusMessage* call) {
  if (dbus_message_is_method_call(call, "org.freedesktop.DBus.Properties", "Get") != 0) return property(call);
  const bool isRequest =
      dbus_message_is_method_call(call, "org.freedesktop.RealtimeKit1", "MakeThreadRealtimeWithPID") != 0;
  return isRequest ? makeRealtime(call) : nullptr;
}

/// Answers with the types that the real service uses.
DBusMessage* RealtimeKitService::property(DBusMessage* call) const {
  const char* interface = "";
  const char* name = "";
  dbus_message_get_args(call, nullptr, DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING, &name,
                        DBUS_TYPE_INVALID);
  const bool isPriority = std::string_view(name) == "MaxRealtimePriority";
  DBusMessage* const answer = dbus_message_new_method_return(call);
  DBusMessageIter argument;
  DBusMessageIter value;
  dbus_message_iter_init_append(answer, &argument);
  dbus_message_iter_open_container(&argument, DBUS_TYPE_VARIANT, isPriority ? "i" : "x", &value);
  if (isPriority) {
    dbus_message_iter_append_basic(&value, DBUS_TYPE_INT32, &behaviour_.maxPriority);
  } else {
    dbus_message_iter_append_basic(&value, DBUS_TYPE_INT64, &behaviour_.maxCpuUs);
  }
  dbus_message_iter_close_container(&argument, &value);
  return answer;
}

DBusMessage* RealtimeKitService::makeRealtime(DBusMessage* call) {
  Request request{};
  dbus_message_get_args(call, nullptr, DBUS_TYPE_UINT64, &request.process, DBUS_TYPE_UINT64, &request.thread,
                        DBUS_TYPE_UINT32, &request.priority, DBUS_TYPE_INVALID);
  rlimit limit{};
  getrlimit(RLIMIT_RTTIME, &limit);
  request.cpuLimitUs = limit.rlim_max;
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
  }
  if (behaviour_.grants) return dbus_message_new_method_return(call);
  return dbus_message_new_error(call, DBUS_ERROR_ACCESS_DENIED, "refused");
}

}  // namespace tolvane::test
