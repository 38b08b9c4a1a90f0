// The test signal: a tone of its own on each channel, so that a recording tells which channel it came from.
#pragma once

#include <array>
#include <cstdint>

namespace tolvane::test {

inline constexpr unsigned kChannels = 8;
inline constexpr unsigned kRateHz = 48000;
inline constexpr double kToneAmplitude = 0.5;

/// The tone of each channel. None is a harmonic of another.
inline constexpr std::array<double, kChannels> kTonesHz = {307.0,  503.0,  997.0,  1499.0,
                                                           2503.0, 4001.0, 6007.0, 9001.0};

/// A sample of the channel's tone.
[[nodiscard]] float toneSample(unsigned channel, std::uint64_t frame);

}  // namespace tolvane::test
