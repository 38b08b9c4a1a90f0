#include "hal/support/private_bus.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <sys/prctl.h>
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
  setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
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

DBusConnection* PrivateBus::connect() const {
  DBusConnection* const connection = connectTo(address_);
  if (connection == nullptr) throw std::runtime_error("no connection to the bus");
  return connection;
}

void PrivateBus::hang(bool isHung) const {
  kill(daemon_, isHung ? SIGSTOP : SIGCONT);
}

}  // namespace tolvane::test
