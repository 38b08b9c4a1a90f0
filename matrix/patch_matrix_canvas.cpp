#include "matrix/patch_matrix_canvas.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include "matrix/device_pixels.h"

namespace tolvane {

PatchMatrixCanvas::PatchMatrixCanvas(const QRect& frame, QWidget* parent) : QWidget(parent) {
  setGeometry(frame);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setFocusPolicy(Qt::StrongFocus);
}

PatchMatrixCanvas::PatchMatrixCanvas(QWidget* parent) : PatchMatrixCanvas(QRect(0, 0, 640, 480), parent) {}

bool PatchMatrixCanvas::contains(const MatrixCell& cell) const noexcept {
  return cell.column >= 0 && cell.column < outputCount && cell.row >= 0 && cell.row < inputCount;
}

bool PatchMatrixCanvas::isActive(const MatrixCell& cell) const {
  return connections.contains(routeKey(cell.row, cell.column));
}

void PatchMatrixCanvas::toggle(const MatrixCell& cell) {
  if (contains(cell) && onToggled) {
    onToggled(cell.row, cell.column);
  }
}

void PatchMatrixCanvas::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  alignToPixels(painter);
  draw(painter, withCutPixels(event->rect()) & rect());
  if (focusVisible_) {
    drawFocusRing(painter);
  }
}

void PatchMatrixCanvas::draw(QPainter& painter, const QRectF& area) {
  const VisibleRange columns = visibleRange(area.left(), area.right(), cs, outputCount);
  const VisibleRange rows = visibleRange(area.top(), area.bottom(), cs, inputCount);
  // Tiles show only cells, so they serve only an area that lies within the grid.
  const bool onlyCells = !columns.empty() && !rows.empty() &&
                         area.right() <= cs * static_cast<double>(outputCount) &&
                         area.bottom() <= cs * static_cast<double>(inputCount);
  if (onlyCells && tiles_.prepare(painter.deviceTransform(), cs)) {
    drawTiles(painter, area, columns, rows);
  } else {
    drawCells(painter, area, columns, rows);
  }
}

void PatchMatrixCanvas::drawCells(QPainter& painter, const QRectF& area, const VisibleRange& columns,
                                  const VisibleRange& rows) {
  CellPainter cells(painter, cs);
  cells.paintBackground(withCutPixels(area.toAlignedRect()));
  if (columns.empty() || rows.empty()) {
    return;
  }
  cells.paintGrid(area, columns, rows);
  for (std::int64_t row = rows.first; row <= rows.last; ++row) {
    for (std::int64_t column = columns.first; column <= columns.last; ++column) {
      cells.paintCell({cs * static_cast<double>(column), cs * static_cast<double>(row)}, look(row, column));
    }
  }
}

void PatchMatrixCanvas::drawTiles(QPainter& painter, const QRectF& area, const VisibleRange& columns,
                                  const VisibleRange& rows) {
  // The range may end with a cell that only touches the area. The tile before it already holds its grid line,
  // so nothing else of that cell is visible.
  const auto starts = [this](std::int64_t cell, double end) { return cs * static_cast<double>(cell) < end; };
  for (std::int64_t row = rows.first; row <= rows.last && starts(row, area.bottom()); ++row) {
    for (std::int64_t column = columns.first; column <= columns.last && starts(column, area.right());
         ++column) {
      tiles_.paint(painter, {cs * static_cast<double>(column), cs * static_cast<double>(row)},
                   look(row, column), {column + 1 < outputCount, row + 1 < inputCount});
    }
  }
}

CellLook PatchMatrixCanvas::look(std::int64_t row, std::int64_t column) const {
  if (isActive({row, column})) {
    return CellLook::active;
  }
  return row == column ? CellLook::diagonal : CellLook::offDiagonal;
}

void PatchMatrixCanvas::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    event->ignore();
    return;
  }
  const MatrixCell cell = cellAt(event->position());
  if (!contains(cell)) {
    return;
  }
  // Keys continue from the clicked cell. The ring appears with the first key.
  updateFocusRing();
  focusVisible_ = false;
  focus_ = cell;
  toggle(cell);
}

}  // namespace tolvane
