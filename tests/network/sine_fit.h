// Fits a sine to samples by least squares.
#pragma once

#include <cstddef>
#include <functional>

namespace tolvane::test {

/// offset + sineAmplitude * sin(step * i) + cosineAmplitude * cos(step * i), with i counted from the middle
/// of the block.
struct Sine {
  double stepRadians = 0.0;  // phase from one frame to the next
  double cosineAmplitude = 0.0;
  double sineAmplitude = 0.0;
  double offset = 0.0;

  [[nodiscard]] double at(double frameFromMiddle) const;
  [[nodiscard]] double amplitude() const;
  [[nodiscard]] double phaseRadians() const;  // at the middle of the block
};

/// The sine of any frequency near `stepRadians` that leaves the least squares in the block of `frames`
/// samples.
[[nodiscard]] Sine fitSine(const std::function<double(std::size_t)>& sample, std::size_t frames,
                           double stepRadians);

}  // namespace tolvane::test
