// Properties of this HAL only. The system's HAL on macOS reports them as unknown.
#pragma once

#include <cstdint>

extern "C" {

/// The current scheduling of the thread that runs a device's callback. The thread may get real-time priority
/// only some time after its first cycle.
struct TolvaneThreadScheduling {
  std::int32_t mPolicy;    // SCHED_OTHER, SCHED_FIFO and so on
  std::int32_t mPriority;  // of a real-time policy, else 0
};

enum : std::uint32_t {
  /// 'tsch' device, global: TolvaneThreadScheduling. Reading it returns kAudioHardwareNotRunningError if
  /// nothing is started or no cycle has run since the start.
  kTolvaneDevicePropertyIOThreadScheduling = 0x74736368,
  /// 'tmlk' device, global: UInt32, 1 if the system cannot page out the samples and the stack that the cycles
  /// use, 0 if it can. Reading it returns kAudioHardwareNotRunningError if nothing is started or the driver
  /// does not know.
  kTolvaneDevicePropertyMemoryLocked = 0x746D6C6B,
};

}  // extern "C"

static_assert(sizeof(TolvaneThreadScheduling) == 8);
