// Where things lie in the matrix, in points.
#pragma once

#include <QPointF>
#include <QRect>
#include <cstdint>

namespace tolvane {

inline constexpr double kCellSize = 16.0;     // edge of one cell
inline constexpr double kLabelWidth = 38.0;   // of the row strip and the corner
inline constexpr double kLabelHeight = 38.0;  // of the column strip and the corner

/// One cell of the grid, zero-based.
struct MatrixCell {
  std::int64_t row = 0;     // input
  std::int64_t column = 0;  // output

  bool operator==(const MatrixCell&) const = default;
};

/// Length of an axis of so many cells, limited to the largest widget size. [any-thread]
[[nodiscard]] int axisLength(std::int64_t count) noexcept;

/// The cell's square on the canvas. A cell beyond the largest widget size lies just beyond it. [any-thread]
[[nodiscard]] QRect cellRect(const MatrixCell& cell) noexcept;

/// The cell at a point of the canvas, truncated toward zero. It may lie outside the grid. A point that is not
/// finite is a fatal error. [any-thread]
[[nodiscard]] MatrixCell cellAt(const QPointF& point) noexcept;

/// The place of a label in its strip. `scrollOffset` is the content's position at the strip's start.
/// [any-thread]
[[nodiscard]] QRect columnLabelRect(std::int64_t column, double scrollOffset, int stripHeight) noexcept;
[[nodiscard]] QRect rowLabelRect(std::int64_t row, double scrollOffset, int stripWidth) noexcept;

}  // namespace tolvane
