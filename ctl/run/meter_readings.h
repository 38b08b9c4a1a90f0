#pragma once

#include <span>

#include "core/patch/patch_connection.h"
#include "ctl/devices/channels.h"
#include "ctl/run/meter_bank.h"
#include "ctl/terminal/meter_view.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// Takes the peak of every channel that a sounding route uses, once each, in ascending order, into `picture`.
/// Skips channels that the device does not have. A label is the channel's number, and its name if it has one.
/// [main-thread]
void readMeters(MeterBank& bank, std::span<const PatchConnection> routes, const AudioDeviceInfo& device,
                const ChannelNames& names, MeterPicture& picture);

}  // namespace tolvane::ctl
