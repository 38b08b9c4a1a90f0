#pragma once

#include <cstdint>

namespace tolvane {

/// A range of cells on one axis, both ends included. Empty if last < first.
struct VisibleRange {
  std::int64_t first = 0;
  std::int64_t last = -1;

  [[nodiscard]] bool empty() const noexcept { return last < first; }
};

/// The cells between two positions (points, from the start of cell 0) on an axis of `count` cells of
/// `cellSize` points: floor(from / cellSize) to ceil(to / cellSize), clamped to the count. It is a fatal
/// error if a quotient is not finite or exceeds 64 bits, or if count is the smallest integer. [any-thread]
[[nodiscard]] VisibleRange visibleRange(double from, double to, double cellSize, std::int64_t count) noexcept;

/// Truncates a number toward zero. A number that is not finite or exceeds 64 bits is a fatal error.
/// [any-thread]
[[nodiscard]] std::int64_t truncated(double value) noexcept;

}  // namespace tolvane
