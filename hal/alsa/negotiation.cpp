#include "hal/alsa/negotiation.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <initializer_list>
#include <vector>

namespace tolvane::hal::alsa {

namespace {

using Spaces = std::vector<HwParams*>;

constexpr unsigned kUsualRatesHz[] = {8000,  11025, 16000, 22050, 24000,  32000,  44100,
                                      48000, 64000, 88200, 96000, 176400, 192000, 384000};

/// The candidate nearest to `wanted` that every space takes; of two equally near, the earlier. 0 if there is
/// none.
template <typename Takes>
unsigned nearestOfAll(const Spaces& spaces, const std::vector<unsigned>& candidates, unsigned wanted,
                      const Takes& takes) {
  unsigned best = 0;
  const auto distance = [wanted](unsigned value) { return value > wanted ? value - wanted : wanted - value; };
  for (const unsigned candidate : candidates) {
    if (candidate == 0 || (best != 0 && distance(candidate) >= distance(best))) continue;
    const bool byAll =
        std::all_of(spaces.begin(), spaces.end(), [&](const HwParams* s) { return takes(*s, candidate); });
    if (byAll) best = candidate;
  }
  return best;
}

unsigned commonRate(const Spaces& spaces) {
  std::vector<unsigned> candidates{kPreferredRateHz};
  for (const HwParams* space : spaces) candidates.push_back(space->nearestRate(kPreferredRateHz));
  candidates.insert(candidates.end(), std::begin(kUsualRatesHz), std::end(kUsualRatesHz));
  return nearestOfAll(spaces, candidates, kPreferredRateHz,
                      [](const HwParams& space, unsigned rate) { return space.takesRate(rate); });
}

unsigned commonPeriod(const Spaces& spaces, unsigned wanted) {
  std::vector<unsigned> candidates{wanted};
  for (const HwParams* space : spaces) candidates.push_back(space->nearestPeriod(wanted));
  for (unsigned frames = 16; frames <= kMaxPeriodFrames; frames *= 2) candidates.push_back(frames);
  candidates.erase(std::remove_if(candidates.begin(), candidates.end(),
                                  [](unsigned frames) { return frames > kMaxPeriodFrames; }),
                   candidates.end());
  return nearestOfAll(spaces, candidates, wanted,
                      [](const HwParams& space, unsigned frames) { return space.takesPeriod(frames); });
}

int settle(HwParams& space, unsigned rateHz, unsigned channels, DuplexFormat& format) {
  const int rateError = space.setRate(rateHz);
  if (rateError < 0) return rateError;
  const int channelError = space.setChannels(channels);
  if (channelError < 0) return channelError;
  format.minPeriodFrames = std::max(format.minPeriodFrames, space.minPeriodFrames());
  format.maxPeriodFrames = std::min(format.maxPeriodFrames, space.maxPeriodFrames());
  return 0;
}

}  // namespace

int negotiate(HwParams* capture, HwParams* playback, const DuplexWish& wish, DuplexFormat& format) {
  Spaces spaces;
  for (HwParams* const space : {capture, playback}) {
    if (space == nullptr) continue;
    const int error = space->begin();
    if (error < 0) return error;
    spaces.push_back(space);
  }
  const unsigned rateHz = commonRate(spaces);
  if (rateHz == 0) return -EINVAL;
  DuplexFormat agreed{rateHz, 0, 0, 0, 1, kMaxPeriodFrames};
  int error = capture == nullptr ? 0 : settle(*capture, rateHz, wish.inputChannels, agreed);
  if (error == 0 && playback != nullptr) error = settle(*playback, rateHz, wish.outputChannels, agreed);
  if (error < 0) return error;
  if (capture != nullptr) agreed.inputChannels = capture->channels();
  if (playback != nullptr) agreed.outputChannels = playback->channels();
  agreed.periodFrames = commonPeriod(spaces, wish.periodFrames);
  if (agreed.periodFrames == 0) return -EINVAL;
  format = agreed;
  return 0;
}

}  // namespace tolvane::hal::alsa
