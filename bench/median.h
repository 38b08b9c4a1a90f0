#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tolvane::bench {

/// `values` must not be empty. Of two middle values, the upper one.
template <class T>
[[nodiscard]] T median(std::vector<T> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace tolvane::bench
