// A property of this HAL only. The system's HAL on macOS reports it as unknown.
#pragma once

#include <cstdint>

extern "C" {

enum : std::uint32_t {
  /// 'tper' device, global: UInt32, how many buffers of 'fsiz' frames the hardware holds, settable within
  /// 'tpr#'. Fewer give less delay; more survive a later computer. A device whose driver does not know the
  /// hardware returns kAudioHardwareUnsupportedOperationError for both.
  kTolvaneDevicePropertyPeriods = 0x74706572,
  /// 'tpr#' device, global: AudioValueRange, what 'tper' can be.
  kTolvaneDevicePropertyPeriodsRange = 0x74707223,
};

}  // extern "C"
