// libdbus, loaded at run time so that the same program runs on machines without it.
#pragma once

#include <chrono>
#include <deque>
#include <memory>

#include <dbus/dbus.h>

namespace tolvane::hal {

#define TOLVANE_DBUS_FUNCTIONS(FUNCTION)           \
  FUNCTION(dbus_threads_init_default)              \
  FUNCTION(dbus_bus_get_private)                   \
  FUNCTION(dbus_connection_open_private)           \
  FUNCTION(dbus_connection_set_exit_on_disconnect) \
  FUNCTION(dbus_connection_close)                  \
  FUNCTION(dbus_connection_unref)                  \
  FUNCTION(dbus_connection_get_unix_fd)            \
  FUNCTION(dbus_connection_read_write)             \
  FUNCTION(dbus_connection_pop_message)            \
  FUNCTION(dbus_connection_send)                   \
  FUNCTION(dbus_message_new_method_call)           \
  FUNCTION(dbus_message_new_method_return)         \
  FUNCTION(dbus_message_new_error)                 \
  FUNCTION(dbus_message_append_args)               \
  FUNCTION(dbus_message_get_args)                  \
  FUNCTION(dbus_message_get_type)                  \
  FUNCTION(dbus_message_get_reply_serial)          \
  FUNCTION(dbus_message_has_path)                  \
  FUNCTION(dbus_message_is_method_call)            \
  FUNCTION(dbus_message_set_auto_start)            \
  FUNCTION(dbus_message_unref)                     \
  FUNCTION(dbus_message_iter_init)                 \
  FUNCTION(dbus_message_iter_init_append)          \
  FUNCTION(dbus_message_iter_open_container)       \
  FUNCTION(dbus_message_iter_close_container)      \
  FUNCTION(dbus_message_iter_append_basic)         \
  FUNCTION(dbus_message_iter_recurse)              \
  FUNCTION(dbus_message_iter_get_arg_type)         \
  FUNCTION(dbus_message_iter_get_basic)

/// The functions under their own names.
struct DBus {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member cannot be declared in parentheses
#define TOLVANE_DBUS_MEMBER(name) decltype(&::name) name = nullptr;
  TOLVANE_DBUS_FUNCTIONS(TOLVANE_DBUS_MEMBER)
#undef TOLVANE_DBUS_MEMBER
};

/// The library, loaded at the first call and never unloaded. Null if it is missing or lacks one of the
/// functions. [not-io]
[[nodiscard]] const DBus* dbus();

struct UnrefMessage {
  const DBus* dbus = nullptr;
  void operator()(DBusMessage* message) const noexcept { dbus->dbus_message_unref(message); }
};
using BusMessage = std::unique_ptr<DBusMessage, UnrefMessage>;

/// A private connection to a message bus, or none. One thread at a time may use it. [not-io]
class BusConnection {
 public:
  /// `connection` may be null. The new object owns it.
  BusConnection(const DBus& dbus, DBusConnection* connection) noexcept;
  BusConnection(BusConnection&& other) noexcept;
  BusConnection& operator=(BusConnection&&) = delete;
  ~BusConnection();

  explicit operator bool() const noexcept { return connection_ != nullptr; }
  [[nodiscard]] const DBus& dbus() const noexcept { return dbus_; }

  [[nodiscard]] BusMessage newCall(const char* destination, const char* path, const char* interface,
                                   const char* method) const;
  /// Waits for the answer, whatever the bus does. Null if there is none in time, or if it is an error. Keeps
  /// other messages for next().
  BusMessage ask(const BusMessage& call, std::chrono::milliseconds limit);

  /// The next message that is there; null if there is none.
  BusMessage next();
  void send(const BusMessage& message) const;
  /// Reads and writes what it can without waiting. False if the bus has gone.
  bool transfer() const;
  /// For poll(): readable when transfer() has something to read. -1 if there is none.
  [[nodiscard]] int descriptor() const;

 private:
  const DBus& dbus_;
  DBusConnection* connection_;
  std::deque<BusMessage> kept_;
};

/// Connects to the user's session bus, which the environment names, and never starts one. Waits up to `limit`
/// for the bus. [not-io]
[[nodiscard]] BusConnection connectToSessionBus(const DBus& dbus, std::chrono::milliseconds limit);

}  // namespace tolvane::hal
