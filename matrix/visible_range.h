#pragma once

#include <cstdint>

namespace tolvane {

/// The cells of one axis that a stretch of it may touch, both ends included; empty when last < first.
struct VisibleRange {
  std::int64_t first = 0;
  std::int64_t last = -1;

  [[nodiscard]] bool empty() const noexcept { return last < first; }
};

/// The cells between two positions (points, from the start of cell 0) on an axis of count cells of cellSize
/// points: from floor(from / cellSize) to ceil(to / cellSize), kept within the count. A quotient that is not
/// finite or beyond 64 bits, or a count without predecessor, is a fatal error. [any-thread]
[[nodiscard]] VisibleRange visibleRange(double from, double to, double cellSize, std::int64_t count) noexcept;

/// The integer part of a number, truncated toward zero. A number that is not finite or beyond 64 bits is a
/// fatal error. [any-thread]
[[nodiscard]] std::int64_t truncated(double value) noexcept;

}  // namespace tolvane
