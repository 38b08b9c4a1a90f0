// What both directions of a card can do together.
#pragma once

#include <vector>

#include "hal/alsa/hw_params.h"

namespace tolvane::hal::alsa {

inline constexpr unsigned kPreferredRateHz = 48000;
inline constexpr unsigned kPreferredPeriodFrames = 256;
inline constexpr unsigned kPreferredPeriods = 3;
/// The driver offers no longer cycles: the layers above support no more.
inline constexpr unsigned kMaxPeriodFrames = 8192;

/// The settings that a user can ask a card for.
struct CardSettings {
  unsigned rateHz = kPreferredRateHz;
  unsigned periodFrames = kPreferredPeriodFrames;
  unsigned periods = kPreferredPeriods;  // that the hardware's buffer holds

  bool operator==(const CardSettings&) const = default;
};

/// What is asked for. Channels: 0 for the most.
struct DuplexWish {
  unsigned inputChannels = 0;
  unsigned outputChannels = 0;
  CardSettings settings;
};

/// The settings that a card then runs with. A plain value; a missing direction has 0 channels.
struct DuplexFormat {
  unsigned rateHz = 0;
  unsigned inputChannels = 0;
  unsigned outputChannels = 0;
  unsigned periodFrames = 0;
  unsigned minPeriodFrames = 0;
  unsigned maxPeriodFrames = 0;
  unsigned periods = 0;
  unsigned minPeriods = 0;
  unsigned maxPeriods = 0;

  bool operator==(const DuplexFormat&) const = default;
};

/// The settings that a card would run with, and what else it can do.
struct DuplexOffer {
  DuplexFormat format;
  /// The rates that both directions can do, ascending: the usual ones, and the one of `format`.
  std::vector<unsigned> ratesHz;
};

/// Chooses one rate, the channels, the formats of the samples, and one period for the given spaces, in this
/// order; one of the spaces may be null. Of the rates that both can do, takes the nearest to the one asked
/// for; likewise of the periods and of their numbers. It tries the nearest value of each direction and the
/// usual values. Narrows the spaces, except for the period. Returns 0 or a negative errno: EINVAL if there is
/// nothing that both can do. [not-io]
int negotiate(HwParams* capture, HwParams* playback, const DuplexWish& wish, DuplexOffer& offer);

}  // namespace tolvane::hal::alsa
