#include "hal/support/dbus.h"

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <sys/stat.h>

#include "hal/support/shared_library.h"

namespace tolvane::hal {

namespace {

// NOLINTNEXTLINE(readability-function-size): one statement for each function of the library
std::optional<DBus> loadDBus() {
  SharedLibrary file("libdbus-1.so.3");
  DBus loaded;
#define TOLVANE_DBUS_RESOLVE(name) file.resolve(#name, loaded.name);
  TOLVANE_DBUS_FUNCTIONS(TOLVANE_DBUS_RESOLVE)
#undef TOLVANE_DBUS_RESOLVE
  if (!file.isComplete() || loaded.dbus_threads_init_default() == 0) return std::nullopt;
  return loaded;
}

/// The bytes of a path as an address holds them.
std::string escaped(const std::string& path) {
  constexpr char kHexadecimal[] = "0123456789abcdef";
  constexpr std::string_view kPlain = "-_/.\\*";
  std::string text;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isAlphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (isAlphanumeric || kPlain.find(c) != std::string_view::npos) {
      text += c;
    } else {
      text += '%';
      text += kHexadecimal[byte >> 4U];
      text += kHexadecimal[byte & 0xFU];
    }
  }
  return text;
}

bool isSocket(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

/// Empty if the user has no session bus.
std::string sessionBusAddress() {
  // The library would start a bus for this address.
  constexpr std::string_view kStarting = "autolaunch:";
  if (const char* const named = std::getenv("DBUS_SESSION_BUS_ADDRESS"); named != nullptr && *named != '\0') {
    const std::string address = named;
    return address.starts_with(kStarting) ? std::string() : address;
  }
  const char* const folder = std::getenv("XDG_RUNTIME_DIR");
  const std::string path = folder == nullptr ? std::string() : std::string(folder) + "/bus";
  return path.starts_with('/') && isSocket(path) ? "unix:path=" + escaped(path) : std::string();
}

}  // namespace

const DBus* dbus() {
  static const std::optional<DBus> kLoaded = loadDBus();
  return kLoaded ? &*kLoaded : nullptr;
}

BusConnection::BusConnection(const DBus& dbus, DBusConnection* connection) noexcept
    : dbus_(dbus), connection_(connection) {
  if (connection_ != nullptr) dbus_.dbus_connection_set_exit_on_disconnect(connection_, 0);
}

BusConnection::BusConnection(BusConnection&& other) noexcept
    : dbus_(other.dbus_),
      connection_(std::exchange(other.connection_, nullptr)),
      kept_(std::move(other.kept_)) {}

BusConnection::~BusConnection() {
  kept_.clear();
  if (connection_ == nullptr) return;
  dbus_.dbus_connection_close(connection_);
  dbus_.dbus_connection_unref(connection_);
}

BusMessage BusConnection::newCall(const char* destination, const char* path, const char* interface,
                                  const char* method) const {
  return {dbus_.dbus_message_new_method_call(destination, path, interface, method), {&dbus_}};
}

// The library's own way to wait has no limit while the bus has not let us in.
BusMessage BusConnection::ask(const BusMessage& call, std::chrono::milliseconds limit) {
  BusMessage answer{nullptr, {&dbus_}};
  dbus_uint32_t serial = 0;
  if (connection_ == nullptr || !call) return answer;
  if (dbus_.dbus_connection_send(connection_, call.get(), &serial) == 0) return answer;
  const auto deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    while (BusMessage message{dbus_.dbus_connection_pop_message(connection_), {&dbus_}}) {
      if (dbus_.dbus_message_get_reply_serial(message.get()) != serial) {
        kept_.push_back(std::move(message));
        continue;
      }
      const bool isError = dbus_.dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_ERROR;
      return isError ? std::move(answer) : std::move(message);
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return answer;
    if (dbus_.dbus_connection_read_write(connection_, static_cast<int>(left.count())) == 0) return answer;
  }
}

BusMessage BusConnection::next() {
  if (kept_.empty()) return {dbus_.dbus_connection_pop_message(connection_), {&dbus_}};
  BusMessage message = std::move(kept_.front());
  kept_.pop_front();
  return message;
}

void BusConnection::send(const BusMessage& message) const {
  dbus_.dbus_connection_send(connection_, message.get(), nullptr);
}

bool BusConnection::transfer() const {
  return dbus_.dbus_connection_read_write(connection_, 0) != 0;
}

int BusConnection::descriptor() const {
  int descriptor = -1;
  return dbus_.dbus_connection_get_unix_fd(connection_, &descriptor) == 0 ? -1 : descriptor;
}

BusConnection connectToSessionBus(const DBus& dbus, std::chrono::milliseconds limit) {
  const std::string address = sessionBusAddress();
  if (address.empty()) return {dbus, nullptr};
  BusConnection bus(dbus, dbus.dbus_connection_open_private(address.c_str(), nullptr));
  const BusMessage hello = bus.newCall(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "Hello");
  if (!bus.ask(hello, limit)) return {dbus, nullptr};
  return bus;
}

}  // namespace tolvane::hal
