// What both directions of a card can do together.
#pragma once

#include "hal/alsa/hw_params.h"

namespace tolvane::hal::alsa {

inline constexpr unsigned kPreferredRateHz = 48000;
inline constexpr unsigned kPreferredPeriodFrames = 256;
/// The driver offers no longer cycles: the layers above support no more.
inline constexpr unsigned kMaxPeriodFrames = 8192;

/// The settings asked for. Channels: 0 for the most.
struct DuplexWish {
  unsigned inputChannels = 0;
  unsigned outputChannels = 0;
  unsigned periodFrames = kPreferredPeriodFrames;
};

/// The settings that a card then runs with. A plain value; a missing direction has 0 channels.
struct DuplexFormat {
  unsigned rateHz = 0;
  unsigned inputChannels = 0;
  unsigned outputChannels = 0;
  unsigned periodFrames = 0;
  unsigned minPeriodFrames = 0;
  unsigned maxPeriodFrames = 0;

  bool operator==(const DuplexFormat&) const = default;
};

/// Chooses one rate, the channels and one period for the given spaces; one of them may be null. Of the rates
/// that both can do, takes the nearest to kPreferredRateHz, and of the periods the nearest to the one asked
/// for. It tries the nearest value of each direction and the usual values. Narrows the spaces, except for the
/// period. Returns 0 or a negative errno: EINVAL if there is nothing that both can do. [not-io]
int negotiate(HwParams* capture, HwParams* playback, const DuplexWish& wish, DuplexFormat& format);

}  // namespace tolvane::hal::alsa
