#include "hal/support/realtime_kit_service.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tolvane::test {

namespace {

namespace fs = std::filesystem;

std::string configuration(const std::string& address) {
  return "<busconfig><type>custom</type><listen>" + address +
         "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
         "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>\n";
}

/// Becomes a daemon that writes its address to `addressPipe` as soon as it accepts connections.
[[noreturn]] void becomeDaemon(const std::string& configFile, int addressPipe) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const std::string configOption = "--config-file=" + configFile;
  const std::string addressOption = "--print-address=" + std::to_string(addressPipe);
  execlp("dbus-daemon", "dbus-daemon", configOption.c_str(), addressOption.c_str(), "--nofork",
         static_cast<char*>(nullptr));
  _exit(127);
}

DBusConnection* connectTo(const std::string& address) {
  DBusConnection* const connection = dbus_connection_open_private(address.c_str(), nullptr);
  if (connection == nullptr) return nullptr;
  dbus_connection_set_exit_on_disconnect(connection, 0);
  if (dbus_bus_register(connection, nullptr) != 0) return connection;
  dbus_connection_close(connection);
  dbus_connection_unref(connection);
  return nullptr;
}

}  // namespace

const PrivateBus& PrivateBus::shared() {
  static const PrivateBus kBus;
  return kBus;
}

PrivateBus::PrivateBus() {
  folder_ = (fs::temp_directory_path() / "tolvane-bus-XXXXXX").string();
  if (mkdtemp(folder_.data()) == nullptr) throw std::runtime_error("no folder for the bus");
  const std::string socket = folder_ + "/bus";
  address_ = "unix:path=" + socket;
  const std::string configFile = folder_ + "/bus.conf";
  std::ofstream(configFile) << configuration(address_);
  dbus_threads_init_default();
  setenv("DBUS_SYSTEM_BUS_ADDRESS", address_.c_str(), 1);
  int addressPipe[2];
  if (pipe(addressPipe) != 0) throw std::runtime_error("no pipe to the bus");
  daemon_ = fork();
  if (daemon_ == 0) becomeDaemon(configFile, addressPipe[1]);
  close(addressPipe[1]);
  // The socket's file appears before the daemon listens, so only its word counts.
  char firstByte = 0;
  const ssize_t bytesRead = read(addressPipe[0], &firstByte, 1);
  close(addressPipe[0]);
  if (bytesRead != 1) throw std::runtime_error("the bus did not start");
}

PrivateBus::~PrivateBus() {
  if (daemon_ > 0) {
    kill(daemon_, SIGKILL);
    waitpid(daemon_, nullptr, 0);
  }
  fs::remove_all(folder_);
}

RealtimeKitService::RealtimeKitService(const PrivateBus& bus, Behaviour behaviour)
    : behaviour_(behaviour), connection_(connectTo(bus.address())) {
  if (connection_ == nullptr) throw std::runtime_error("no connection to the bus");
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
