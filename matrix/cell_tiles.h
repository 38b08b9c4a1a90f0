#pragma once

#include <QImage>
#include <QPainter>
#include <QTransform>
#include <array>

#include "matrix/cell_painter.h"

namespace tolvane {

/// Which grid lines lie on the far edges of a cell: those of its neighbours, none beyond the last.
struct CellNeighbours {
  bool right = false;
  bool below = false;
};

/// The cells drawn once for the display at hand and copied from then on: the same pixels as drawing them, at
/// a small part of the cost. All of it [main-thread].
class CellTiles {
 public:
  /// Makes ready for drawing through this transform to device pixels. False when its cells do not all cover
  /// the same pixels, so that they must be drawn one by one.
  [[nodiscard]] bool prepare(const QTransform& toDevice, double cellSize);

  /// The cell's square with background, grid lines and shape, starting at corner.
  void paint(QPainter& painter, const QPointF& corner, CellLook look, CellNeighbours neighbours) const;

 private:
  void render(double scale, double cellSize);

  double scale_ = 0.0;  // device pixels per point of the tiles held; 0 before the first
  std::array<QImage, 12> tiles_;
};

}  // namespace tolvane
