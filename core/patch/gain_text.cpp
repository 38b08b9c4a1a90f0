#include "core/patch/gain_text.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include <nlohmann/json.hpp>

#include "base/numeric_locale.h"

namespace tolvane {

namespace {

using FloatJson =
    nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

// Checks both ways of reading: rounding to double and then to float may give another float than rounding
// once.
bool readsBack(const char* text, float gain) {
  return std::strtof(text, nullptr) == gain && static_cast<float>(std::strtod(text, nullptr)) == gain;
}

std::string shortestByTrial(float gain) {
  const ScopedCLocale locale;
  char text[32];
  for (int digits = 1; digits <= std::numeric_limits<float>::max_digits10; ++digits) {
    std::snprintf(text, sizeof text, "%.*e", digits - 1, static_cast<double>(gain));
    if (readsBack(text, gain)) break;
  }
  return text;
}

}  // namespace

std::string gainText(float gain) {
  // From here on, some short texts lie halfway between two floats and round to the even one. The library
  // never uses such a text, so it prints one digit more than needed.
  constexpr float kFirstTie = 1U << 25U;
  // Only for this value and its negative, the library's text gives another float when read as a double and
  // narrowed.
  constexpr float kRoundsTwice = 0x1.5c87fap-84F;
  const float size = std::fabs(gain);
  if (size >= kFirstTie || size == kRoundsTwice) return shortestByTrial(gain);
  return FloatJson(gain).dump();
}

}  // namespace tolvane
