#include "hal/alsa/negotiation.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <utility>
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

bool takenByAll(const Spaces& spaces, unsigned rateHz) {
  return std::all_of(spaces.begin(), spaces.end(), [=](const HwParams* s) { return s->takesRate(rateHz); });
}

unsigned commonRate(const Spaces& spaces, unsigned wanted) {
  std::vector<unsigned> candidates{wanted};
  for (const HwParams* space : spaces) candidates.push_back(space->nearestRate(wanted));
  candidates.insert(candidates.end(), std::begin(kUsualRatesHz), std::end(kUsualRatesHz));
  return nearestOfAll(spaces, candidates, wanted,
                      [](const HwParams& space, unsigned rate) { return space.takesRate(rate); });
}

/// The usual rates, and the one that was chosen.
std::vector<unsigned> commonRates(const Spaces& spaces, unsigned chosen) {
  std::vector<unsigned> rates;
  std::copy_if(std::begin(kUsualRatesHz), std::end(kUsualRatesHz), std::back_inserter(rates),
               [&](unsigned rate) { return rate != chosen && takenByAll(spaces, rate); });
  rates.insert(std::upper_bound(rates.begin(), rates.end(), chosen), chosen);
  return rates;
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
  int error = space.setRate(rateHz);
  if (error == 0) error = space.setChannels(channels);
  if (error == 0) error = space.chooseFormat();
  if (error < 0) return error;
  format.minPeriodFrames = std::max(format.minPeriodFrames, space.minPeriodFrames());
  format.maxPeriodFrames = std::min(format.maxPeriodFrames, space.maxPeriodFrames());
  return 0;
}

/// Sets the number of periods that both buffers can hold, at least two.
int settlePeriods(const Spaces& spaces, unsigned wanted, DuplexFormat& format) {
  format.minPeriods = 2;
  format.maxPeriods = std::numeric_limits<unsigned>::max();
  for (const HwParams* const space : spaces) {
    const Range range = space->periodCounts(format.periodFrames);
    format.minPeriods = std::max(format.minPeriods, range.min);
    format.maxPeriods = std::min(format.maxPeriods, range.max);
  }
  if (format.minPeriods > format.maxPeriods) return -EINVAL;
  format.periods = std::clamp(wanted, format.minPeriods, format.maxPeriods);
  return 0;
}

int beginAll(HwParams* capture, HwParams* playback, Spaces& spaces) {
  for (HwParams* const space : {capture, playback}) {
    if (space == nullptr) continue;
    const int error = space->begin();
    if (error < 0) return error;
    spaces.push_back(space);
  }
  return 0;
}

}  // namespace

int negotiate(HwParams* capture, HwParams* playback, const DuplexWish& wish, DuplexOffer& offer) {
  Spaces spaces;
  int error = beginAll(capture, playback, spaces);
  if (error < 0) return error;
  const unsigned rateHz = commonRate(spaces, wish.settings.rateHz);
  if (rateHz == 0) return -EINVAL;
  std::vector<unsigned> ratesHz = commonRates(spaces, rateHz);
  DuplexFormat agreed;
  agreed.rateHz = rateHz;
  agreed.minPeriodFrames = 1;
  agreed.maxPeriodFrames = kMaxPeriodFrames;
  if (capture != nullptr) error = settle(*capture, rateHz, wish.inputChannels, agreed);
  if (error == 0 && playback != nullptr) error = settle(*playback, rateHz, wish.outputChannels, agreed);
  if (error < 0) return error;
  if (capture != nullptr) agreed.inputChannels = capture->channels();
  if (playback != nullptr) agreed.outputChannels = playback->channels();
  agreed.periodFrames = commonPeriod(spaces, wish.settings.periodFrames);
  if (agreed.periodFrames == 0) return -EINVAL;
  error = settlePeriods(spaces, wish.settings.periods, agreed);
  if (error < 0) return error;
  offer = {agreed, std::move(ratesHz)};
  return 0;
}

}  // namespace tolvane::hal::alsa
