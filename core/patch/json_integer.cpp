#include "core/patch/json_integer.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>
#include <system_error>

namespace tolvane {

namespace {

using Outcome = IntegerReading::Outcome;

// No integer of 64 bits has more digits than this.
constexpr std::int64_t kMaxDigits = 19;

// The number as digits × 10^exponent, without zeros at either end; no digits means zero.
struct Decimal {
  bool negative = false;
  std::string digits;
  std::int64_t exponent = 0;
};

// Clamps an exponent beyond 64 bits. The limit acts as infinite: no text has that many digits.
std::int64_t readExponent(std::string_view text) {
  constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max() / 4;
  if (text.starts_with('+')) text.remove_prefix(1);
  std::int64_t exponent = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
  if (error == std::errc::result_out_of_range) return text.starts_with('-') ? -kHuge : kHuge;
  return std::clamp(exponent, -kHuge, kHuge);
}

Decimal splitDecimal(std::string_view text) {
  Decimal decimal;
  decimal.negative = text.starts_with('-');
  if (decimal.negative) text.remove_prefix(1);
  const auto mark = std::min(text.find_first_of("eE"), text.size());
  if (mark < text.size()) decimal.exponent = readExponent(text.substr(mark + 1));
  const auto mantissa = text.substr(0, mark);
  const auto point = std::min(mantissa.find('.'), mantissa.size());
  decimal.digits = mantissa.substr(0, point);
  if (point < mantissa.size()) {
    const auto fraction = mantissa.substr(point + 1);
    decimal.digits += fraction;
    decimal.exponent -= static_cast<std::int64_t>(fraction.size());
  }
  return decimal;
}

void stripZeros(Decimal& decimal) {
  decimal.digits.erase(0, decimal.digits.find_first_not_of('0'));
  const auto kept = decimal.digits.find_last_not_of('0') + 1;
  decimal.exponent += static_cast<std::int64_t>(decimal.digits.size() - kept);
  decimal.digits.resize(kept);
}

}  // namespace

IntegerReading readInteger(std::string_view jsonNumber) {
  Decimal decimal = splitDecimal(jsonNumber);
  stripZeros(decimal);
  if (decimal.digits.empty()) return {};
  if (decimal.exponent < 0) return {Outcome::fraction, 0};
  if (static_cast<std::int64_t>(decimal.digits.size()) + decimal.exponent > kMaxDigits) {
    return {Outcome::outOfRange, 0};
  }
  decimal.digits.append(static_cast<std::size_t>(decimal.exponent), '0');
  if (decimal.negative) decimal.digits.insert(0, 1, '-');
  IntegerReading reading;
  const char* first = decimal.digits.data();
  const auto [end, error] = std::from_chars(first, first + decimal.digits.size(), reading.value);
  if (error != std::errc()) return {Outcome::outOfRange, 0};
  return reading;
}

}  // namespace tolvane
