#pragma once

#include <cstdint>

#include "hal/jack/jack_library.h"
#include "hal/surface/core_audio_types.h"

namespace tolvane::hal {

/// The time stamps of one cycle.
struct CycleTimes {
  AudioTimeStamp now;     // the cycle's start
  AudioTimeStamp input;   // when its first input frame was taken: a cycle earlier
  AudioTimeStamp output;  // when its first output frame will sound: a cycle later
};

/// Makes time stamps of the server's frame clock. Its 32 bits wrap around after a day; the stamps do not.
class CycleClock {
 public:
  /// The stamps of the cycle that is running; `jumped` is set when it does not begin where the one before it
  /// ended. [io-thread]
  CycleTimes stamp(const JackLibrary& library, const jack_client_t* client, jack_nframes_t frames,
                   bool& jumped) noexcept;

 private:
  bool started_ = false;
  jack_nframes_t serverFrame_ = 0;    // at the last cycle's start
  jack_nframes_t expectedFrame_ = 0;  // at this cycle's start, if nothing was lost
  std::int64_t sampleTime_ = 0;       // serverFrame_, unwrapped
};

}  // namespace tolvane::hal
