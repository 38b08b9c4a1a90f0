// The ALSA driver: each sound card is a device, used without a sound server.
#pragma once

#include <functional>
#include <memory>
#include <set>

#include "hal/driver/driver.h"

namespace tolvane::hal {

namespace alsa {
struct Library;
}

/// The driver. On a machine without libasound, or without cards, it has no devices.
///
/// A device is a card: the first PCM of each direction, used together, under the card's lasting identity. A
/// card that a running sound server uses is held until it is claimed. A card that somebody else uses is
/// listed, but cannot be started and its period cannot be set: kAudioDevicePermissionsError. The same holds
/// if only one of its two directions is in use. A card runs one session at a time.
///
/// A claim or a start reserves the card on the user's session bus, and asks its owner there, such as
/// PipeWire's session manager, to release it. An owner that keeps it is somebody else who uses it. The end of
/// the session gives the card back. A card that a session has lost counts as claimed: when it returns, a
/// sound server may open it first. [not-io]
[[nodiscard]] std::unique_ptr<Driver> makeAlsaDriver();

/// The driver with another libasound, for tests, and with other knowledge of the cards that sound servers
/// use. `alsa` outlives it. [not-io]
[[nodiscard]] std::unique_ptr<Driver> makeAlsaDriver(const alsa::Library& alsa,
                                                     std::function<std::set<int>()> cardsOfSoundServers);

}  // namespace tolvane::hal
