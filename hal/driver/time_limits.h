// How long the HAL waits for a driver, and a driver for its sound server. A driver's limit lies below the
// HAL's for the same wait, so that the driver can answer before the HAL goes on without it.
#pragma once

#include <chrono>

namespace tolvane::hal {

// A list of devices. A driver that takes longer is left out. The first list waits longer, because the first
// client that connects often starts the sound server. PipeWire's driver waits for an overdue answer to the
// previous list before it asks for the next, unless that answer seems to be lost.
inline constexpr std::chrono::milliseconds kListLimit{150};
inline constexpr std::chrono::milliseconds kFirstListLimit{1000};
inline constexpr std::chrono::milliseconds kJackListLimit{140};
inline constexpr std::chrono::milliseconds kPipeWireOverdueListLimit{10};
inline constexpr std::chrono::milliseconds kPipeWireListLimit{120};
inline constexpr std::chrono::milliseconds kPipeWireLostListLimit{2000};
static_assert(kListLimit < kFirstListLimit);
static_assert(kJackListLimit < kListLimit);
static_assert(kPipeWireOverdueListLimit + kPipeWireListLimit < kListLimit);

// A start. The HAL waits for a sign of life of a driver that was too late for the last list. A driver first
// waits for one of its server, then for the start itself: with JACK for every port, milliseconds each on a
// busy server; with PipeWire for all links. JACK's two waits together may exceed the HAL's.
// AudioDeviceStart() then returns the same status a little earlier.
inline constexpr std::chrono::milliseconds kStartLimit{5000};
inline constexpr std::chrono::milliseconds kSignOfLifeLimit{800};
inline constexpr std::chrono::milliseconds kJackStartLimit{4500};
inline constexpr std::chrono::milliseconds kPipeWireStartLimit{4000};
static_assert(kJackStartLimit < kStartLimit);
static_assert(kSignOfLifeLimit + kPipeWireStartLimit < kStartLimit);
// With ALSA: for the session bus and the card's owner to answer, then for the owner to close the card.
inline constexpr std::chrono::milliseconds kReservationLimit{2500};
inline constexpr std::chrono::milliseconds kReleasedCardLimit{1500};
static_assert(kReservationLimit + kReleasedCardLimit < kStartLimit);
inline constexpr std::chrono::milliseconds kClaimLimit{5000};
static_assert(kReservationLimit + kReleasedCardLimit < kClaimLimit);

// The end of a session, whose callback is silent by then. It is awaited by a stop (AudioDeviceStop() promises
// one second), by the end of the process, and by the session that replaces this one. A session that takes
// longer is left behind.
inline constexpr std::chrono::milliseconds kStopLimit{800};
inline constexpr std::chrono::milliseconds kExitLimit{600};
inline constexpr std::chrono::milliseconds kOutgoingLimit{500};
inline constexpr std::chrono::milliseconds kJackLeaveLimit{400};
inline constexpr std::chrono::milliseconds kPipeWireStopLimit{800};
static_assert(kStopLimit < std::chrono::seconds{1});
static_assert(kOutgoingLimit < kExitLimit && kExitLimit < kStopLimit);
static_assert(kJackLeaveLimit < kOutgoingLimit);
static_assert(kPipeWireStopLimit <= kStopLimit);
inline constexpr std::chrono::milliseconds kGiveBackLimit{200};  // for the session bus
static_assert(kGiveBackLimit < kOutgoingLimit);

// A change of the buffer size.
inline constexpr std::chrono::milliseconds kSettingLimit{500};
inline constexpr std::chrono::milliseconds kJackSettingLimit{450};
static_assert(kJackSettingLimit < kSettingLimit);

}  // namespace tolvane::hal
