// The real-time thread of a device that runs, as far as the system tells of it.
#pragma once

#include <optional>
#include <string>

#include "hal/core_audio.h"

namespace tolvane::ctl {

/// How the thread of the device's callback is scheduled now; none where the HAL does not say, or when no
/// cycle has run. [not-io]
[[nodiscard]] std::optional<TolvaneThreadScheduling> ioThreadScheduling(AudioDeviceID device);

[[nodiscard]] bool isRealtime(const TolvaneThreadScheduling& scheduling) noexcept;

/// "SCHED_FIFO, priority 60"; "SCHED_OTHER" of a policy without priorities.
[[nodiscard]] std::string schedulingText(const TolvaneThreadScheduling& scheduling);

}  // namespace tolvane::ctl
