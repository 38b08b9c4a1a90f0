// Checks of numbers on the command line. All numbers are decimal.
#pragma once

#include <string>

namespace CLI {
class Validator;
}

namespace tolvane::ctl {

/// Takes decimal digits only: a leading 0 does not mean octal. [main-thread]
[[nodiscard]] CLI::Validator wholeNumber(int lowest, int highest);

/// What is wrong with a decimal number; empty if nothing is. [main-thread]
[[nodiscard]] std::string requireDecimal(const std::string& text);

/// The same for a level in decibels, which may also be "off". [main-thread]
[[nodiscard]] std::string requireLevel(const std::string& text);

/// What is wrong with a time to wait, in seconds; empty if nothing is. 0 is allowed. [main-thread]
[[nodiscard]] std::string requireWait(const std::string& text);

/// The same for a time to run: 0 is not allowed. [main-thread]
[[nodiscard]] std::string requireSensibleSeconds(const std::string& text);

/// The same in minutes. [main-thread]
[[nodiscard]] std::string requireSensibleMinutes(const std::string& text);

}  // namespace tolvane::ctl
