#include "hal/support/natural_order.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace tolvane::hal {

bool naturallyLess(std::string_view a, std::string_view b) {
  const bool isLessAsText = a < b;
  const auto isDigit = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; };
  const auto takeNumber = [&](std::string_view& text) {
    const auto zeros = std::min(text.find_first_not_of('0'), text.size());
    text.remove_prefix(zeros);
    const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
    const auto digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    return digits;
  };
  while (!a.empty() && !b.empty()) {
    if (isDigit(a.front()) && isDigit(b.front())) {
      const auto numberA = takeNumber(a);
      const auto numberB = takeNumber(b);
      if (numberA.size() != numberB.size()) return numberA.size() < numberB.size();
      if (numberA != numberB) return numberA < numberB;
    } else {
      if (a.front() != b.front()) return a.front() < b.front();
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
  }
  return a.size() != b.size() ? a.size() < b.size() : isLessAsText;
}

}  // namespace tolvane::hal
