// What both directions of a card can do together.
#pragma once

#include "hal/alsa/hardware_space.h"

namespace tolvane::hal::alsa {

inline constexpr unsigned kPreferredRateHz = 48000;
inline constexpr unsigned kPreferredPeriodFrames = 256;
/// Longer cycles than this are not offered: everything above is made for no more.
inline constexpr unsigned kMaxPeriodFrames = 8192;

/// What is asked for. Channels: 0 for the most.
struct DuplexWish {
  unsigned inputChannels = 0;
  unsigned outputChannels = 0;
  unsigned periodFrames = kPreferredPeriodFrames;
};

/// What a card does then. A plain value; a direction that is not there has no channels.
struct DuplexFormat {
  unsigned rateHz = 0;
  unsigned inputChannels = 0;
  unsigned outputChannels = 0;
  unsigned periodFrames = 0;
  unsigned minPeriodFrames = 0;
  unsigned maxPeriodFrames = 0;

  bool operator==(const DuplexFormat&) const = default;
};

/// Settles one rate, the channels and one period for the spaces given, either of which may be null: the rate
/// nearest to the preferred one, the period nearest to the one wished for, that both can do. The spaces are
/// narrowed but for the period. 0, or a negative errno: EINVAL where there is nothing that both can do.
/// [not-io]
int negotiate(HardwareSpace* capture, HardwareSpace* playback, const DuplexWish& wish, DuplexFormat& format);

}  // namespace tolvane::hal::alsa
