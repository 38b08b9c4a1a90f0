// The ALSA driver: each sound card is a device, without any sound server in between.
#pragma once

#include <memory>

#include "hal/driver/driver.h"

namespace tolvane::hal {

/// The driver. On a machine without libasound, or without cards, it has no devices.
///
/// A device is a card: the first PCM of each of its directions, together, named by the card's lasting
/// identity. A card that a running sound server has is the server's, and not listed. One that somebody else
/// has is listed, and not started: kAudioDevicePermissionsError; nor is one direction alone of a card that
/// has two. A card takes one session at a time. [not-io]
[[nodiscard]] std::unique_ptr<Driver> makeAlsaDriver();

}  // namespace tolvane::hal
