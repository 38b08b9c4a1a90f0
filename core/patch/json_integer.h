// Reads integers from the text of JSON numbers.
#pragma once

#include <cstdint>
#include <string_view>

namespace tolvane {

/// The result of reading a number's text as an integer.
struct IntegerReading {
  enum class Outcome { integer, fraction, outOfRange };
  Outcome outcome = Outcome::integer;
  std::int64_t value = 0;  // valid only with Outcome::integer
};

/// The exact integer that a JSON number's text stands for: "1.0", "1e3" and "9007199254740993.0" are
/// integers, "1.5" and "1e-400" have a fraction, "9223372036854775808" is out of range. The text must follow
/// JSON's grammar for numbers. [any-thread]
[[nodiscard]] IntegerReading readInteger(std::string_view jsonNumber);

}  // namespace tolvane
