// The scheduling of a running device's IO thread.
#pragma once

#include <optional>
#include <string>

#include "hal/core_audio.h"

namespace tolvane::ctl {

/// The current scheduling of the thread that calls the device's IO proc. None if the HAL does not report it
/// or no cycle has run. [not-io]
[[nodiscard]] std::optional<TolvaneThreadScheduling> ioThreadScheduling(AudioDeviceID device);

/// Whether the memory that the IO thread uses is locked. None if the HAL does not report it. [not-io]
[[nodiscard]] std::optional<bool> isIoMemoryLocked(AudioDeviceID device);

[[nodiscard]] bool isRealtime(const TolvaneThreadScheduling& scheduling) noexcept;

/// "SCHED_FIFO, priority 60", or "SCHED_OTHER" for a policy without priorities.
[[nodiscard]] std::string schedulingText(const TolvaneThreadScheduling& scheduling);

}  // namespace tolvane::ctl
