// Reads arbitrary text as the numbers that people type: the window's entry fields, the numbers of
// tolvanectl's options, and numbers in a sound server's properties. Each must agree with a slow and simple
// reading.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

#include "app/entry_parsing.h"
#include "core/patch/gain_text.h"
#include "ctl/arguments/numbers.h"
#include "ctl/terminal/decimal.h"
#include "require.h"

namespace tolvane::fuzz {
namespace {

__extension__ using Wide = __int128;

/// The integer, digit by digit; none if it is beyond 64 bits.
std::optional<std::int64_t> integerIn(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  Wide value = 0;
  for (const char digit : text) {
    value = value * 10 + (digit - '0');
    if (value > (Wide{1} << 100)) return std::nullopt;
  }
  if (isNegative) value = -value;
  const auto narrow = static_cast<std::int64_t>(value);
  return narrow == value ? std::optional(narrow) : std::nullopt;
}

bool isSame(float a, float b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

void checkGain(const std::string& text) {
  const std::optional<float> gain = parseGain(text);
  require(!gain || (!text.empty() && text.find('\0') == std::string::npos && text.find(' ') != 0));
  if (!gain) return;
  // An integer is a gain, too, and a shown gain can be typed again.
  require(parseGain(formatGain(*gain)).has_value());
  require(isSame(std::strtof(ctl::shortestDecimal(*gain).c_str(), nullptr), *gain));
  require(!ctl::decibels(*gain).empty());
  if (std::isfinite(*gain)) require(isSame(std::strtof(gainText(*gain).c_str(), nullptr), *gain));
}

void checkWholeNumber(const std::string& text, int lowest, int highest) {
  std::string changed = text;
  const bool isTaken = ctl::wholeNumber(lowest, highest)(changed).empty();
  const auto value = text.starts_with('+') ? std::nullopt : integerIn(text);
  require(isTaken == (value && *value >= lowest && *value <= highest));
  require(changed == (isTaken ? std::to_string(*value) : text));
}

/// Bounds around the number itself. No fuzzer would guess the numbers beside fixed bounds.
void checkBounds(const std::string& text) {
  const auto value = integerIn(text);
  if (!value || *value < -1'000'000'000 || *value > 1'000'000'000) return;
  const auto number = static_cast<int>(*value);
  checkWholeNumber(text, number, number);
  checkWholeNumber(text, number + 1, number + 2);
  checkWholeNumber(text, number - 2, number - 1);
}

void checkSeconds(const std::string& text) {
  const bool isWait = ctl::requireWait(text).empty();
  const bool isTime = ctl::requireSensibleSeconds(text).empty();
  const double seconds = std::strtod(text.c_str(), nullptr);
  require(!isWait || (seconds >= 0.0 && seconds <= 1e9));
  require(isTime == (isWait && seconds > 0.0));
  // What integerIn() reads is decimal.
  const auto whole = integerIn(text);
  if (whole && *whole >= 0 && *whole <= 1'000'000'000) require(isWait);
  if (isWait) require(!ctl::plainDecimal(seconds).empty());
}

void readAsNumbers(const std::string& text) {
  require(parseInteger(text) == integerIn(text));
  checkGain(text);
  checkWholeNumber(text, 1, 1024);
  checkWholeNumber(text, 1, 65536);
  checkBounds(text);
  checkSeconds(text);
}

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  tolvane::fuzz::readAsNumbers({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
