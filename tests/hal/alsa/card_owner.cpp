#include "hal/alsa/card_owner.h"

#include <stdexcept>

namespace tolvane::test {

namespace {

constexpr char kInterface[] = "org.freedesktop.ReserveDevice1";

std::string nameOf(int card) {
  return std::string(kInterface) + ".Audio" + std::to_string(card);
}

void end(DBusConnection* connection) {
  dbus_connection_close(connection);
  dbus_connection_unref(connection);
}

}  // namespace

CardOwner::CardOwner(int card, Manner manner, std::function<void()> onRelease)
    : manner_(manner), onRelease_(std::move(onRelease)), connection_(PrivateBus::shared().connect()) {
  const int result =
      dbus_bus_request_name(connection_, nameOf(card).c_str(),
                            DBUS_NAME_FLAG_ALLOW_REPLACEMENT | DBUS_NAME_FLAG_DO_NOT_QUEUE, nullptr);
  if (result != DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER) {
    end(connection_);
    throw std::runtime_error("somebody has reserved the card already");
  }
  thread_ = std::thread([this] { serve(); });
}

CardOwner::~CardOwner() {
  stop_ = true;
  thread_.join();
  end(connection_);
}

std::vector<std::int32_t> CardOwner::asked() const {
  const std::lock_guard lock(mutex_);
  return asked_;
}

void CardOwner::serve() {
  while (!stop_) {
    if (dbus_connection_read_write(connection_, 10) == 0) return;
    while (DBusMessage* const call = dbus_connection_pop_message(connection_)) {
      if (dbus_message_is_method_call(call, kInterface, "RequestRelease") != 0) answer(call);
      dbus_message_unref(call);
    }
  }
}

void CardOwner::answer(DBusMessage* call) {
  std::int32_t priority = 0;
  dbus_message_get_args(call, nullptr, DBUS_TYPE_INT32, &priority, DBUS_TYPE_INVALID);
  {
    const std::lock_guard lock(mutex_);
    asked_.push_back(priority);
  }
  if (manner_ == Manner::isSilent) return;
  if (manner_ == Manner::leaves) return dbus_connection_close(connection_);
  const dbus_bool_t agrees = manner_ == Manner::releases ? 1 : 0;
  if (agrees != 0) onRelease_();
  DBusMessage* const answer = dbus_message_new_method_return(call);
  dbus_message_append_args(answer, DBUS_TYPE_BOOLEAN, &agrees, DBUS_TYPE_INVALID);
  dbus_connection_send(connection_, answer, nullptr);
  dbus_message_unref(answer);
}

Asker::Asker(int card)
    : name_(nameOf(card)),
      path_("/org/freedesktop/ReserveDevice1/Audio" + std::to_string(card)),
      connection_(PrivateBus::shared().connect()) {}

Asker::~Asker() {
  end(connection_);
}

bool Asker::isReserved() const {
  return dbus_bus_name_has_owner(connection_, name_.c_str(), nullptr) != 0;
}

bool Asker::requestRelease(std::int32_t priority) const {
  DBusMessage* const call =
      dbus_message_new_method_call(name_.c_str(), path_.c_str(), kInterface, "RequestRelease");
  dbus_message_append_args(call, DBUS_TYPE_INT32, &priority, DBUS_TYPE_INVALID);
  DBusMessage* const answer = dbus_connection_send_with_reply_and_block(connection_, call, 5000, nullptr);
  dbus_message_unref(call);
  if (answer == nullptr) throw std::runtime_error("the card's owner does not answer");
  dbus_bool_t agrees = 0;
  dbus_message_get_args(answer, nullptr, DBUS_TYPE_BOOLEAN, &agrees, DBUS_TYPE_INVALID);
  dbus_message_unref(answer);
  return agrees != 0;
}

bool Asker::takeName() const {
  const int result = dbus_bus_request_name(
      connection_, name_.c_str(), DBUS_NAME_FLAG_DO_NOT_QUEUE | DBUS_NAME_FLAG_REPLACE_EXISTING, nullptr);
  return result == DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER;
}

DBusMessage* Asker::newGet(const char* name) const {
  DBusMessage* const call = dbus_message_new_method_call(
      name_.c_str(), path_.c_str(), DBUS_INTERFACE_PROPERTIES, name == nullptr ? "GetAll" : "Get");
  const char* const interface = kInterface;
  dbus_message_append_args(call, DBUS_TYPE_STRING, &interface, DBUS_TYPE_INVALID);
  if (name != nullptr) dbus_message_append_args(call, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
  return call;
}

DBusMessage* Asker::get(const char* name) const {
  DBusMessage* const call = newGet(name);
  DBusMessage* const answer = dbus_connection_send_with_reply_and_block(connection_, call, 5000, nullptr);
  dbus_message_unref(call);
  return answer;
}

std::string Asker::property(const char* name) const {
  DBusMessage* const answer = get(name);
  if (answer == nullptr) return "";
  DBusMessageIter argument;
  DBusMessageIter value;
  dbus_message_iter_init(answer, &argument);
  dbus_message_iter_recurse(&argument, &value);
  const char* text = "";
  if (dbus_message_iter_get_arg_type(&value) == DBUS_TYPE_STRING) dbus_message_iter_get_basic(&value, &text);
  std::string copy = text;
  dbus_message_unref(answer);
  return copy;
}

std::int32_t Asker::priority() const {
  DBusMessage* const answer = get("Priority");
  if (answer == nullptr) return 0;
  DBusMessageIter argument;
  DBusMessageIter value;
  dbus_message_iter_init(answer, &argument);
  dbus_message_iter_recurse(&argument, &value);
  std::int32_t priority = 0;
  if (dbus_message_iter_get_arg_type(&value) == DBUS_TYPE_INT32) {
    dbus_message_iter_get_basic(&value, &priority);
  }
  dbus_message_unref(answer);
  return priority;
}

std::size_t Asker::propertyCount() const {
  DBusMessage* const answer = get(nullptr);
  if (answer == nullptr) return 0;
  DBusMessageIter argument;
  dbus_message_iter_init(answer, &argument);
  const int count = dbus_message_iter_get_element_count(&argument);
  dbus_message_unref(answer);
  return static_cast<std::size_t>(count);
}

int Asker::answersToTwo(std::chrono::microseconds gap) const {
  DBusPendingCall* pending[2] = {};
  for (DBusPendingCall*& one : pending) {
    const auto begin = std::chrono::steady_clock::now();
    while (&one != pending && std::chrono::steady_clock::now() - begin < gap) {
    }
    DBusMessage* const call = newGet(nullptr);
    dbus_connection_send_with_reply(connection_, call, &one, 5000);
    dbus_connection_flush(connection_);
    dbus_message_unref(call);
  }
  int answers = 0;
  for (DBusPendingCall* const one : pending) {
    dbus_pending_call_block(one);
    DBusMessage* const answer = dbus_pending_call_steal_reply(one);
    if (dbus_message_get_type(answer) == DBUS_MESSAGE_TYPE_METHOD_RETURN) ++answers;
    dbus_message_unref(answer);
    dbus_pending_call_unref(one);
  }
  return answers;
}

}  // namespace tolvane::test
