// A property of this HAL only. The system's HAL on macOS reports it as unknown.
#pragma once

#include <cstdint>

extern "C" {

enum : std::uint32_t {
  /// 'rmln' device, input or output: array of UInt32, ascending. The channels, counted from 0, whose links to
  /// the device somebody else has removed, as in a patch bay, while the callback was started. They have no
  /// sound until the next start, or until the device has been away and is back. Empty if nobody has.
  kTolvaneDevicePropertyRemovedLinks = 0x726D6C6E,
};

}  // extern "C"
