#include "ctl/arguments/numbers.h"

#include <charconv>
#include <cstdlib>
#include <optional>

#include <CLI/CLI.hpp>

namespace tolvane::ctl {

namespace {

constexpr double kMostSeconds = 1e9;

/// None if the text is no decimal number. std::strtod() alone would accept hexadecimal numbers, infinity and
/// trailing text.
std::optional<double> decimalOf(const std::string& text) {
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  const bool isDecimal = text.find_first_not_of("0123456789.eE+-") == std::string::npos;
  const bool isNumber = !text.empty() && isDecimal && end == text.c_str() + text.size();
  return isNumber ? std::optional(number) : std::nullopt;
}

/// The number of seconds; none if the text is no decimal number or is above kMostSeconds.
std::optional<double> secondsOf(const std::string& text) {
  const auto seconds = decimalOf(text);
  return seconds && *seconds <= kMostSeconds ? seconds : std::nullopt;
}

}  // namespace

CLI::Validator wholeNumber(int lowest, int highest) {
  const auto check = [lowest, highest](std::string& text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < lowest || number > highest) {
      return '"' + text + "\" is not a whole number from " + std::to_string(lowest) + " to " +
             std::to_string(highest);
    }
    text = std::to_string(number);
    return std::string();
  };
  return {check, ""};
}

std::string requireDecimal(const std::string& text) {
  return decimalOf(text) ? "" : '"' + text + "\" is not a number";
}

std::string requireLevel(const std::string& text) {
  return text == "off" || decimalOf(text) ? "" : '"' + text + "\" is not a number of decibels";
}

std::string requireWait(const std::string& text) {
  if (secondsOf(text).value_or(-1.0) >= 0.0) return "";
  return '"' + text + "\" is not a number of seconds from 0 to 1000000000";
}

std::string requireSensibleSeconds(const std::string& text) {
  if (secondsOf(text).value_or(0.0) > 0.0) return "";
  return '"' + text + "\" is not a number of seconds above 0 and up to 1000000000";
}

std::string requireSensibleMinutes(const std::string& text) {
  if (secondsOf(text).value_or(0.0) > 0.0) return "";
  return '"' + text + "\" is not a number of minutes above 0 and up to 1000000000";
}

}  // namespace tolvane::ctl
