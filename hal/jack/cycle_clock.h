#pragma once

#include <cstdint>

#include "hal/jack/jack_library.h"
#include "hal/surface/core_audio_types.h"

namespace tolvane::hal {

/// The time stamps of one cycle.
struct CycleTimes {
  AudioTimeStamp now;     // the cycle's start
  AudioTimeStamp input;   // when its first input frame was captured: one cycle earlier
  AudioTimeStamp output;  // when its first output frame will sound: one cycle later
};

/// Makes time stamps from the server's frame clock. That clock has 32 bits and wraps around after a day; the
/// stamps do not.
class CycleClock {
 public:
  /// The stamps of the current cycle. Sets `jumped` to true if the cycle does not begin where the last one
  /// ended, else to false. [io-thread]
  CycleTimes stamp(const JackLibrary& library, const jack_client_t* client, jack_nframes_t frames,
                   bool& jumped) noexcept;

 private:
  bool started_ = false;
  jack_nframes_t serverFrame_ = 0;    // at the last cycle's start
  jack_nframes_t expectedFrame_ = 0;  // at the next cycle's start, if nothing is lost
  std::int64_t sampleTime_ = 0;       // serverFrame_, unwrapped
};

}  // namespace tolvane::hal
