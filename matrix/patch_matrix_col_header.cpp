#include "matrix/patch_matrix_col_header.h"

#include <QHelpEvent>
#include <QPainter>

#include "matrix/device_pixels.h"
#include "matrix/header_style.h"
#include "matrix/plain_tool_tip.h"
#include "matrix/visible_range.h"

namespace tolvane {

PatchMatrixColHeader::PatchMatrixColHeader(const QRect& frame, QWidget* parent) : QWidget(parent) {
  setGeometry(frame);
  setAttribute(Qt::WA_OpaquePaintEvent);
}

PatchMatrixColHeader::PatchMatrixColHeader(QWidget* parent)
    : PatchMatrixColHeader(QRect(0, 0, 640, 480), parent) {}

// Only of channels with a name: the number is there to read.
bool PatchMatrixColHeader::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) {
    return QWidget::event(event);
  }
  const auto& help = *static_cast<QHelpEvent*>(event);
  const std::int64_t column = truncated((help.pos().x() + scrollOffset) / cs);
  const bool isNamed = column < outputCount && outputName(column, namer) != outputName(column);
  showPlainToolTip(help, isNamed ? outputName(column, namer) : QString(), this,
                   columnLabelRect(column, scrollOffset, height()));
  return true;
}

void PatchMatrixColHeader::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const HeaderStyle style;
  painter.fillRect(withCutPixels(rect()), style.background);
  strokeHorizontal(painter, lH - 0.5, 0.0, width(), style.border);
  const VisibleRange columns = visibleRange(scrollOffset, scrollOffset + width(), cs, outputCount);
  for (std::int64_t column = columns.first; column <= columns.last; ++column) {
    drawColumn(painter, style, column);
  }
}

void PatchMatrixColHeader::drawColumn(QPainter& painter, const HeaderStyle& style,
                                      std::int64_t column) const {
  const std::int64_t number = column + 1;
  const double left = cs * static_cast<double>(column) - scrollOffset;
  const LabelStyle& label = style.label(number);
  const QString text = QString::number(number);
  const QSizeF size = label.measure(text);
  label.draw(painter, {left + (cs - size.width()) / 2.0, (lH - size.height()) / 2.0}, text);
  if (HeaderStyle::hasTick(number)) {
    strokeVertical(painter, left + cs / 2.0, lH - 5.0, lH - 1.0, style.tick);
  }
}

}  // namespace tolvane
