// A property of this HAL only. The system's HAL on macOS reports it as unknown.
#pragma once

#include <cstdint>

extern "C" {

/// How a device without hardware runs from its next start on. Both values are 0 at first.
struct TolvaneRehearsal {
  std::uint32_t mFreewheel;  // 1: each cycle follows the last one at once; the sample times go on as ever
  std::uint32_t mLoopback;   // 1: output n of a cycle is input n of the next one
};

enum : std::uint32_t {
  /// 'rhsl' device, global: TolvaneRehearsal. It can be set, not read. Setting it returns
  /// kAudioHardwareUnsupportedOperationError for every device but the virtual one.
  kTolvaneDevicePropertyRehearsal = 0x7268736C,
};

}  // extern "C"

static_assert(sizeof(TolvaneRehearsal) == 8);
