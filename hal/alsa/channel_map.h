#pragma once

#include <string>
#include <vector>

#include "hal/alsa/library.h"

namespace tolvane::hal::alsa {

/// The names that a PCM's driver gives to its channels when it runs with this many of them: "FL", "FR". Empty
/// if the driver has no map for this number; a channel without a position has an empty name. Works while the
/// PCM is in use. [not-io]
std::vector<std::string> channelNames(const Library& alsa, int card, int device, Direction direction,
                                      unsigned channels);

}  // namespace tolvane::hal::alsa
