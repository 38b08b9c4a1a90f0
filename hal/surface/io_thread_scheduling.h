// A property of this HAL's own. The system's HAL on macOS does not have it, and says so.
#pragma once

#include <cstdint>

extern "C" {

/// How the system schedules the thread that runs a device's callback, now: it may be given real-time priority
/// some time after its first cycle.
struct TolvaneThreadScheduling {
  std::int32_t mPolicy;    // SCHED_OTHER, SCHED_FIFO and so on
  std::int32_t mPriority;  // of a real-time policy, else 0
};

enum : std::uint32_t {
  /// 'tsch' device, global: TolvaneThreadScheduling. Read with no cycle run since the start, or with nothing
  /// started, it is kAudioHardwareNotRunningError.
  kTolvaneDevicePropertyIOThreadScheduling = 0x74736368,
};

}  // extern "C"

static_assert(sizeof(TolvaneThreadScheduling) == 8);
