#pragma once

#include <string>

#include "hal/support/dbus.h"

namespace tolvane::hal::alsa {

/// A card as the session bus knows it.
struct ReservedCard {
  std::string busName;  // "org.freedesktop.ReserveDevice1.Audio0"
  std::string path;
  std::string shownName;  // UTF-8, for the user of a program that asks for the card
};

/// The card with this number of the kernel.
[[nodiscard]] ReservedCard reservedCard(int number, const std::string& shownName);

inline constexpr char kReservationInterface[] = "org.freedesktop.ReserveDevice1";
/// The highest. The agreement lets its owners keep a card whoever asks, and each of them refuses another.
inline constexpr dbus_int32_t kReservationPriority = 0x7FFFFFFF;

/// The answer to a message about a card that we keep: a refusal to release it, or a property. An error for
/// any other call, and null for a message that wants no answer. [not-io]
[[nodiscard]] BusMessage answerAbout(const ReservedCard& card, const DBus& dbus, DBusMessage* message);

}  // namespace tolvane::hal::alsa
