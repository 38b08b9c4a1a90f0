// Keyboard focus, keys and tool tips of the canvas.
#include <QFocusEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>

#include "matrix/calibrated_color.h"
#include "matrix/device_pixels.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/plain_tool_tip.h"

namespace tolvane {
namespace {

// The cell that a key leads to from this one. Returns the same cell for a key that does not move.
MatrixCell moved(const MatrixCell& cell, const QKeyEvent& key, const MatrixCell& last, std::int64_t page) {
  const bool all = key.modifiers().testFlag(Qt::ControlModifier);
  switch (key.key()) {
    case Qt::Key_Left:
      return {cell.row, cell.column - 1};
    case Qt::Key_Right:
      return {cell.row, cell.column + 1};
    case Qt::Key_Up:
      return {cell.row - 1, cell.column};
    case Qt::Key_Down:
      return {cell.row + 1, cell.column};
    case Qt::Key_Home:
      return {all ? 0 : cell.row, 0};
    case Qt::Key_End:
      return {all ? last.row : cell.row, last.column};
    case Qt::Key_PageUp:
      return {cell.row - page, cell.column};
    case Qt::Key_PageDown:
      return {cell.row + page, cell.column};
    default:
      return cell;
  }
}

bool isMove(int key) {
  switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
      return true;
    default:
      return false;
  }
}

bool isToggle(int key) {
  return key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter;
}

bool cameByKeyboard(Qt::FocusReason reason) {
  return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
         reason == Qt::ShortcutFocusReason;
}

}  // namespace

MatrixCell PatchMatrixCanvas::focusCell() const noexcept {
  // The counts may have shrunk since the cell was chosen.
  const auto within = [](std::int64_t index, std::int64_t count) {
    return std::max<std::int64_t>(0, std::min(index, count - 1));
  };
  return {within(focus_.row, inputCount), within(focus_.column, outputCount)};
}

void PatchMatrixCanvas::moveFocusTo(const MatrixCell& cell) {
  updateFocusRing();
  focus_ = cell;
  focus_ = focusCell();
  updateFocusRing();
  if (onFocusMoved) {
    onFocusMoved();
  }
}

void PatchMatrixCanvas::keyPressEvent(QKeyEvent* event) {
  const MatrixCell cell = focusCell();
  if (isMove(event->key())) {
    const auto page = std::max<std::int64_t>(1, truncated(visibleRegion().boundingRect().height() / cs));
    focusVisible_ = true;
    moveFocusTo(moved(cell, *event, {inputCount - 1, outputCount - 1}, page));
  } else if (isToggle(event->key())) {
    focusVisible_ = true;
    moveFocusTo(cell);
    if (!event->isAutoRepeat()) {
      toggle(cell);
    }
  } else {
    QWidget::keyPressEvent(event);
  }
}

void PatchMatrixCanvas::focusInEvent(QFocusEvent* event) {
  if (cameByKeyboard(event->reason())) {
    focusVisible_ = true;
    moveFocusTo(focusCell());
  }
}

void PatchMatrixCanvas::focusOutEvent(QFocusEvent* /*event*/) {
  updateFocusRing();
  focusVisible_ = false;
}

void PatchMatrixCanvas::drawFocusRing(QPainter& painter) const {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(calibratedRgb(0.4, 0.7, 1.0), 2.0));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRectF(cellRect(focusCell())).adjusted(1.0, 1.0, -1.0, -1.0), 2.0, 2.0);
}

void PatchMatrixCanvas::updateFocusRing() {
  if (focusVisible_) {
    update(withCutPixels(cellRect(focusCell())));
  }
}

bool PatchMatrixCanvas::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    showToolTip(*static_cast<QHelpEvent*>(event));
    return true;
  }
  return QWidget::event(event);
}

void PatchMatrixCanvas::showToolTip(const QHelpEvent& event) {
  const MatrixCell cell = cellAt(event.pos());
  if (contains(cell)) {
    showPlainToolTip(event, cellText(cell), this, cellRect(cell));
  } else {
    QToolTip::hideText();
  }
}

}  // namespace tolvane
