#pragma once

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QRectF>

#include "matrix/visible_range.h"

namespace tolvane {

/// What one cell shows.
enum class CellLook { active, diagonal, offDiagonal };

/// Draws the grid and its cells. Made anew for every draw, with its colours. Strokes are centred on their
/// paths, with exact coverage. The painter must outlive it. All of it [main-thread].
class CellPainter {
 public:
  CellPainter(QPainter& painter, double cellSize);

  /// Fills the area with the background only.
  void paintBackground(const QRectF& area);
  /// Draws the lines on the left edges of the columns and the top edges of the rows, across the area.
  void paintGrid(const QRectF& area, const VisibleRange& columns, const VisibleRange& rows);
  /// Draws one cell's rounded shape. `corner` is the upper left corner of the cell's square.
  void paintCell(const QPointF& corner, CellLook look);

 private:
  QPainter& painter_;
  double cellSize_;
  QPainterPath shape_;
  QPainterPath outline_;
  QColor active_;
  QColor diagonal_;
  QColor offDiagonal_;
  QColor outlineColour_;
  QColor grid_;
};

}  // namespace tolvane
