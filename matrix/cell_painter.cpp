#include "matrix/cell_painter.h"

#include "matrix/calibrated_color.h"

namespace tolvane {
namespace {

constexpr double kGutter = 1.0;
constexpr double kRadius = 2.0;
constexpr double kLineWidth = 0.5;
constexpr double kHalfLine = kLineWidth / 2.0;

// The cell's shape, grown by `growth` points on every side. The corner arcs stay concentric.
QPainterPath roundedShape(double cellSize, double growth) {
  const double start = kGutter - growth;
  const double length = cellSize - 2.0 * start;
  QPainterPath path;
  path.addRoundedRect(QRectF(start, start, length, length), kRadius + growth, kRadius + growth);
  return path;
}

}  // namespace

CellPainter::CellPainter(QPainter& painter, double cellSize)
    : painter_(painter),
      cellSize_(cellSize),
      shape_(roundedShape(cellSize, 0.0)),
      outline_(roundedShape(cellSize, kHalfLine)),
      active_(calibratedRgb(0.18, 0.85, 0.38)),
      diagonal_(calibratedWhite(0.26)),
      offDiagonal_(calibratedWhite(0.19)),
      outlineColour_(calibratedWhite(0.28, 0.8)),
      grid_(calibratedWhite(0.22)) {
  painter_.setRenderHint(QPainter::Antialiasing);
  // The stroke is the area between the two shapes. They wind in opposite directions. Otherwise the coverage
  // is wrong in a pixel that holds an edge of each.
  outline_.addPath(roundedShape(cellSize, -kHalfLine).toReversed());
  outline_.setFillRule(Qt::WindingFill);
}

void CellPainter::paintBackground(const QRectF& area) {
  painter_.fillRect(area, calibratedWhite(0.17));
}

void CellPainter::paintGrid(const QRectF& area, const VisibleRange& columns, const VisibleRange& rows) {
  QPainterPath lines;
  lines.setFillRule(Qt::WindingFill);  // crossings are covered once
  for (std::int64_t column = columns.first; column <= columns.last; ++column) {
    lines.addRect(cellSize_ * static_cast<double>(column) - kHalfLine, area.top(), kLineWidth, area.height());
  }
  for (std::int64_t row = rows.first; row <= rows.last; ++row) {
    lines.addRect(area.left(), cellSize_ * static_cast<double>(row) - kHalfLine, area.width(), kLineWidth);
  }
  painter_.fillPath(lines, grid_);
}

void CellPainter::paintCell(const QPointF& corner, CellLook look) {
  if (look == CellLook::active) {
    painter_.fillPath(shape_.translated(corner), active_);
    return;
  }
  painter_.fillPath(shape_.translated(corner), look == CellLook::diagonal ? diagonal_ : offDiagonal_);
  painter_.fillPath(outline_.translated(corner), outlineColour_);
}

}  // namespace tolvane
