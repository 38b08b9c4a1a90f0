#include "app/entry_parsing.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "base/numeric_locale.h"

namespace tolvane {
std::optional<std::int64_t> parseInteger(std::string_view text) noexcept {
  // from_chars accepts only a minus sign. After a plus sign, another sign is not allowed.
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, value, 10);
  if (error != std::errc{} || stopped != end) return std::nullopt;
  return value;
}

std::optional<float> parseGain(const std::string& text) {
  constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
  if (text.empty() || kWhiteSpace.find(text.front()) != std::string_view::npos) return std::nullopt;
  const ScopedCLocale scope;
  char* stopped = nullptr;
  const float value = std::strtof(text.c_str(), &stopped);
  // strtof stops at an embedded NUL, before the end of the text.
  if (stopped != text.c_str() + text.size()) return std::nullopt;
  return value;
}

std::string formatGain(float gain) {
  const ScopedCLocale scope;
  std::array<char, 64> text{};  // the largest float has 39 digits before the point
  const int length = std::snprintf(text.data(), text.size(), "%.2f", static_cast<double>(gain));
  return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace tolvane
