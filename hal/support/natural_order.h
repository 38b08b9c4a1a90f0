#pragma once

#include <string_view>

namespace tolvane::hal {

/// Compares names as text, but the numbers in them by value: "pro-output-3" comes before "pro-output-10".
/// Names that differ only in leading zeros are compared as text, so that different names never compare equal.
/// [not-io]
[[nodiscard]] bool naturallyLess(std::string_view a, std::string_view b);

}  // namespace tolvane::hal
