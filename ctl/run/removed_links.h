#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "hal/core_audio.h"

namespace tolvane::ctl {

/// Channels of a device, counted from 0, whose links to it somebody else has removed.
struct RemovedChannels {
  std::set<std::uint32_t> inputs;
  std::set<std::uint32_t> outputs;
};

/// Those of the running device. None for a HAL that does not know. [not-io]
[[nodiscard]] RemovedChannels removedChannelsOf(AudioDeviceID device);

/// A sentence about the channels of `now` that `before` lacks, with channels counted from 1. None if there
/// are none. [not-io]
[[nodiscard]] std::optional<std::string> removedLinksNote(const RemovedChannels& before,
                                                          const RemovedChannels& now);

}  // namespace tolvane::ctl
