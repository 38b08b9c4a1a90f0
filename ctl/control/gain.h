// Linear gains and levels in decibels.
#pragma once

#include <optional>
#include <string>

namespace tolvane::ctl::control {

/// The level of a gain in decibels, rounded to four digits after the point; minus infinity for 0. The sign of
/// the gain does not matter. [any-thread]
[[nodiscard]] double decibelsOf(float gain) noexcept;

/// The gain with this level, never negative. None if the level is no number or the gain would not be finite.
/// [any-thread]
[[nodiscard]] std::optional<float> gainOf(double decibels) noexcept;

}  // namespace tolvane::ctl::control
