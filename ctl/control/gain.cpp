#include "ctl/control/gain.h"

#include <cmath>
#include <limits>

namespace tolvane::ctl::control {

double decibelsOf(float gain) noexcept {
  if (gain == 0.0F) return -std::numeric_limits<double>::infinity();
  const double level = 20.0 * std::log10(std::fabs(static_cast<double>(gain)));
  const double rounded = std::round(level * 1e4) / 1e4;
  return rounded == 0.0 ? 0.0 : rounded;  // no "-0.0"
}

std::optional<float> gainOf(double decibels) noexcept {
  const auto gain = static_cast<float>(std::pow(10.0, decibels / 20.0));
  return std::isfinite(gain) ? std::optional(gain) : std::nullopt;
}

}  // namespace tolvane::ctl::control
