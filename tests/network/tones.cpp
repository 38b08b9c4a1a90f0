#include "network/tones.h"

#include <cmath>
#include <numbers>

namespace tolvane::test {

float toneSample(unsigned channel, std::uint64_t frame) {
  // Every tone has whole periods in a second.
  const double second = static_cast<double>(frame % kRateHz) / kRateHz;
  return static_cast<float>(kToneAmplitude *
                            std::sin(2.0 * std::numbers::pi * kTonesHz.at(channel) * second));
}

}  // namespace tolvane::test
