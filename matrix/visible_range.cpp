#include "matrix/visible_range.h"

#include <algorithm>
#include <cmath>

#include "base/fatal.h"

namespace tolvane {

std::int64_t truncated(double value) noexcept {
  constexpr double limit = 9223372036854775808.0;  // 2^63, the first value that does not fit
  if (!std::isfinite(value) || value >= limit || value < -limit) {
    fatal("a matrix position does not fit an integer");
  }
  return static_cast<std::int64_t>(value);
}

VisibleRange visibleRange(double from, double to, double cellSize, std::int64_t count) noexcept {
  std::int64_t lastCell = 0;
  if (__builtin_sub_overflow(count, std::int64_t{1}, &lastCell)) {
    fatal("a matrix count has no predecessor");
  }
  return {std::max(std::int64_t{0}, truncated(std::floor(from / cellSize))),
          std::min(lastCell, truncated(std::ceil(to / cellSize)))};
}

}  // namespace tolvane
