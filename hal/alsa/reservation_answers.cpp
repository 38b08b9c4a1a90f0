#include "hal/alsa/reservation_answers.h"

#include <string_view>

#include "hal/support/utf8.h"

namespace tolvane::hal::alsa {

namespace {

constexpr char kApplicationName[] = "Tolvane";
constexpr const char* kProperties[] = {"Priority", "ApplicationName", "ApplicationDeviceName"};

/// Appends a property's value as a variant. False if there is no such property.
bool appendProperty(const DBus& dbus, const ReservedCard& card, std::string_view property,
                    DBusMessageIter* arguments) {
  const bool isPriority = property == kProperties[0];
  const bool isApplication = property == kProperties[1];
  if (!isPriority && !isApplication && property != kProperties[2]) return false;
  const char* const text = isApplication ? kApplicationName : card.shownName.c_str();
  DBusMessageIter value;
  dbus.dbus_message_iter_open_container(arguments, DBUS_TYPE_VARIANT, isPriority ? "i" : "s", &value);
  if (isPriority) {
    dbus.dbus_message_iter_append_basic(&value, DBUS_TYPE_INT32, &kReservationPriority);
  } else {
    dbus.dbus_message_iter_append_basic(&value, DBUS_TYPE_STRING, static_cast<const void*>(&text));
  }
  dbus.dbus_message_iter_close_container(arguments, &value);
  return true;
}

BusMessage error(const DBus& dbus, DBusMessage* call, const char* name) {
  return {dbus.dbus_message_new_error(call, name, "not here"), {&dbus}};
}

BusMessage property(const ReservedCard& card, const DBus& dbus, DBusMessage* call) {
  const char* interface = "";
  const char* name = "";
  if (dbus.dbus_message_get_args(call, nullptr, DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING, &name,
                                 DBUS_TYPE_INVALID) == 0) {
    return error(dbus, call, DBUS_ERROR_INVALID_ARGS);
  }
  BusMessage answer{dbus.dbus_message_new_method_return(call), {&dbus}};
  DBusMessageIter arguments;
  if (answer) dbus.dbus_message_iter_init_append(answer.get(), &arguments);
  const bool isKnown = answer && appendProperty(dbus, card, name, &arguments);
  return isKnown ? std::move(answer) : error(dbus, call, DBUS_ERROR_UNKNOWN_PROPERTY);
}

BusMessage allProperties(const ReservedCard& card, const DBus& dbus, DBusMessage* call) {
  BusMessage answer{dbus.dbus_message_new_method_return(call), {&dbus}};
  if (!answer) return answer;
  DBusMessageIter arguments;
  DBusMessageIter dictionary;
  dbus.dbus_message_iter_init_append(answer.get(), &arguments);
  dbus.dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "{sv}", &dictionary);
  for (const char* const name : kProperties) {
    DBusMessageIter entry;
    dbus.dbus_message_iter_open_container(&dictionary, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
    dbus.dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, static_cast<const void*>(&name));
    appendProperty(dbus, card, name, &entry);
    dbus.dbus_message_iter_close_container(&dictionary, &entry);
  }
  dbus.dbus_message_iter_close_container(&arguments, &dictionary);
  return answer;
}

BusMessage refusal(const DBus& dbus, DBusMessage* call) {
  BusMessage answer{dbus.dbus_message_new_method_return(call), {&dbus}};
  const dbus_bool_t isReleased = 0;
  if (answer) {
    dbus.dbus_message_append_args(answer.get(), DBUS_TYPE_BOOLEAN, &isReleased, DBUS_TYPE_INVALID);
  }
  return answer;
}

}  // namespace

ReservedCard reservedCard(int number, const std::string& shownName) {
  const std::string digits = std::to_string(number);
  return {"org.freedesktop.ReserveDevice1.Audio" + digits, "/org/freedesktop/ReserveDevice1/Audio" + digits,
          validUtf8(shownName)};
}

BusMessage answerAbout(const ReservedCard& card, const DBus& dbus, DBusMessage* message) {
  if (dbus.dbus_message_get_type(message) != DBUS_MESSAGE_TYPE_METHOD_CALL) return {nullptr, {&dbus}};
  const auto is = [&](const char* interface, const char* method) {
    return dbus.dbus_message_is_method_call(message, interface, method) != 0;
  };
  if (dbus.dbus_message_has_path(message, card.path.c_str()) == 0) {
    return error(dbus, message, DBUS_ERROR_UNKNOWN_OBJECT);
  }
  if (is(kReservationInterface, "RequestRelease")) return refusal(dbus, message);
  if (is(DBUS_INTERFACE_PROPERTIES, "Get")) return property(card, dbus, message);
  if (is(DBUS_INTERFACE_PROPERTIES, "GetAll")) return allProperties(card, dbus, message);
  return error(dbus, message, DBUS_ERROR_UNKNOWN_METHOD);
}

}  // namespace tolvane::hal::alsa
