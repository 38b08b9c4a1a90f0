#pragma once

#include <cstdint>
#include <span>

#include "core/patch/patch_connection.h"
#include "ctl/run/meter_bank.h"
#include "ctl/terminal/meter_view.h"

namespace tolvane::ctl {

/// Takes the peak of every channel that a sounding route uses, once each, in ascending order, into `picture`.
/// Skips channels beyond the device's channel counts. [main-thread]
void readMeters(MeterBank& bank, std::span<const PatchConnection> routes, std::int64_t deviceInputs,
                std::int64_t deviceOutputs, MeterPicture& picture);

}  // namespace tolvane::ctl
