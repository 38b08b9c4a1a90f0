#pragma once

#include <QImage>
#include <QPainter>
#include <QTransform>
#include <array>

#include "matrix/cell_painter.h"

namespace tolvane {

/// Whether a cell has neighbours to the right and below. Their grid lines lie on its far edges; the last
/// column and row have none.
struct CellNeighbours {
  bool right = false;
  bool below = false;
};

/// Cells drawn once for the current display, then copied. The pixels are the same as drawn directly, at a
/// small part of the cost. All of it [main-thread].
class CellTiles {
 public:
  /// Prepares tiles for this transform to device pixels. Returns false if the cells do not all cover whole
  /// device pixels; they must then be drawn one by one.
  [[nodiscard]] bool prepare(const QTransform& toDevice, double cellSize);

  /// Draws the cell's square with background, grid lines and shape. `corner` is its upper left corner.
  void paint(QPainter& painter, const QPointF& corner, CellLook look, CellNeighbours neighbours) const;

 private:
  void render(double scale, double cellSize);

  double scale_ = 0.0;  // device pixels per point of the current tiles; 0 before the first
  std::array<QImage, 12> tiles_;
};

}  // namespace tolvane
