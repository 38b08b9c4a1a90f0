// Judges a recording of the tones: noise, gaps, and how steadily time passes in it.
#pragma once

#include <vector>

#include "network/sound_file.h"

namespace tolvane::test {

/// What one channel of a recording holds.
struct Verdict {
  double toneHz = 0.0;
  double seconds = 0.0;           // of sound
  double longestSilenceMs = 0.0;  // within it
  double ownToneShare = 0.0;      // of the energy: how much of it is this channel's tone

  // Of the blocks that hold one steady tone.
  double amplitude = 0.0;
  double signalToNoiseDb = 0.0;
  double worstBlockDb = 0.0;
  double meanSpeedPpm = 0.0;  // deviation from the tone's nominal frequency
  double lowestSpeedPpm = 0.0;
  double highestSpeedPpm = 0.0;

  unsigned unsteadyBlocks = 0;  // in which sound is missing, repeats, or changes its speed
  double firstUnsteadySeconds = 0.0;
};

/// Judges each channel against the tone of channel `tones[channel]` of the test signal.
[[nodiscard]] std::vector<Verdict> judgeTones(const Sound& recording, const std::vector<unsigned>& tones);

}  // namespace tolvane::test
