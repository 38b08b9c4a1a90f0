#include "ctl/terminal/decimal.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace tolvane::ctl {

namespace {

std::string significant(double value, int digits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*g", digits, value);
  return text;
}

bool sameFloat(float a, float b) {
  return a == b && std::signbit(a) == std::signbit(b);
}

}  // namespace

std::string shortestDecimal(float value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0.0F ? "inf" : "-inf";
  constexpr int kDigitsOfFloat = 9;  // these identify every float
  std::string text;
  for (int digits = 1; digits <= kDigitsOfFloat; ++digits) {
    text = significant(static_cast<double>(value), digits);
    if (sameFloat(std::strtof(text.c_str(), nullptr), value)) break;
  }
  const bool looksWhole = text.find_first_of(".e") == std::string::npos;
  return looksWhole ? text + ".0" : text;
}

std::string decibels(float linear) {
  if (std::isnan(linear)) return "nan";
  if (std::isinf(linear)) return "inf";
  if (linear == 0.0F) return "-inf";
  const double level = 20.0 * std::log10(std::fabs(static_cast<double>(linear)));
  const double rounded = std::round(level * 10.0) / 10.0;
  char text[64];
  std::snprintf(text, sizeof text, "%.1f", rounded == 0.0 ? 0.0 : rounded);  // no "-0.0"
  return text;
}

std::string plainDecimal(double value) {
  return significant(value, 12);
}

}  // namespace tolvane::ctl
