#include "matrix/matrix_geometry.h"

#include <QWidget>
#include <algorithm>

#include "matrix/visible_range.h"

namespace tolvane {
namespace {

constexpr int kCell = static_cast<int>(kCellSize);

int labelStart(std::int64_t index, double scrollOffset) noexcept {
  return qRound(kCellSize * static_cast<double>(index) - scrollOffset);
}

}  // namespace

int axisLength(std::int64_t count) noexcept {
  return kCell * static_cast<int>(std::min<std::int64_t>(count, QWIDGETSIZE_MAX / kCell));
}

QRect cellRect(const MatrixCell& cell) noexcept {
  // Indices may exceed the largest widget size.
  const auto start = [](std::int64_t index) {
    return kCell * static_cast<int>(std::clamp<std::int64_t>(index, -1, QWIDGETSIZE_MAX / kCell));
  };
  return {start(cell.column), start(cell.row), kCell, kCell};
}

MatrixCell cellAt(const QPointF& point) noexcept {
  return {truncated(point.y() / kCellSize), truncated(point.x() / kCellSize)};
}

QRect columnLabelRect(std::int64_t column, double scrollOffset, int stripHeight) noexcept {
  return {labelStart(column, scrollOffset), 0, kCell, stripHeight};
}

QRect rowLabelRect(std::int64_t row, double scrollOffset, int stripWidth) noexcept {
  return {0, labelStart(row, scrollOffset), stripWidth, kCell};
}

}  // namespace tolvane
