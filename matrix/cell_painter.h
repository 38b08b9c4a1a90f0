#pragma once

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QRectF>

#include "matrix/visible_range.h"

namespace tolvane {

/// What one cell shows.
enum class CellLook { active, diagonal, offDiagonal };

/// Draws the grid and its cells; made anew for every draw, with its colours. Strokes lie centred on their
/// paths, by exact coverage. The painter must outlive it. All of it [main-thread].
class CellPainter {
 public:
  CellPainter(QPainter& painter, double cellSize);

  /// Everything below the cells, in the area: the background and nothing else.
  void paintBackground(const QRectF& area);
  /// The lines on the left edges of the columns and the top edges of the rows, across the area.
  void paintGrid(const QRectF& area, const VisibleRange& columns, const VisibleRange& rows);
  /// One cell's rounded shape, the cell's square starting at corner.
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
