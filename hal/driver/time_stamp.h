#pragma once

#include "hal/surface/core_audio_types.h"

namespace tolvane::hal {

/// The moment at the frame `sampleTime` of the device's clock, and `hostTimeNs` of the monotonic clock.
/// [any-thread]
[[nodiscard]] inline AudioTimeStamp timeStamp(Float64 sampleTime, UInt64 hostTimeNs) noexcept {
  AudioTimeStamp stamp{};
  stamp.mSampleTime = sampleTime;
  stamp.mHostTime = hostTimeNs;
  stamp.mFlags = kAudioTimeStampSampleTimeValid | kAudioTimeStampHostTimeValid;
  return stamp;
}

}  // namespace tolvane::hal
