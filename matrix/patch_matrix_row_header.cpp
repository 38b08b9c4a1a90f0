#include "matrix/patch_matrix_row_header.h"

#include <QHelpEvent>
#include <QPainter>

#include "matrix/device_pixels.h"
#include "matrix/header_style.h"
#include "matrix/plain_tool_tip.h"
#include "matrix/visible_range.h"

namespace tolvane {

PatchMatrixRowHeader::PatchMatrixRowHeader(const QRect& frame, QWidget* parent) : QWidget(parent) {
  setGeometry(frame);
  setAttribute(Qt::WA_OpaquePaintEvent);
}

PatchMatrixRowHeader::PatchMatrixRowHeader(QWidget* parent)
    : PatchMatrixRowHeader(QRect(0, 0, 640, 480), parent) {}

// Only of channels with a name: the number is there to read.
bool PatchMatrixRowHeader::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) {
    return QWidget::event(event);
  }
  const auto& help = *static_cast<QHelpEvent*>(event);
  const std::int64_t row = truncated((help.pos().y() + scrollOffset) / cs);
  const bool isNamed = row < inputCount && inputName(row, namer) != inputName(row);
  showPlainToolTip(help, isNamed ? inputName(row, namer) : QString(), this,
                   rowLabelRect(row, scrollOffset, width()));
  return true;
}

void PatchMatrixRowHeader::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const HeaderStyle style;
  painter.fillRect(withCutPixels(rect()), style.background);
  strokeVertical(painter, lW - 0.5, 0.0, height(), style.border);
  const VisibleRange rows = visibleRange(scrollOffset, scrollOffset + height(), cs, inputCount);
  for (std::int64_t row = rows.first; row <= rows.last; ++row) {
    drawRow(painter, style, row);
  }
}

void PatchMatrixRowHeader::drawRow(QPainter& painter, const HeaderStyle& style, std::int64_t row) const {
  const std::int64_t number = row + 1;
  const double top = cs * static_cast<double>(row) - scrollOffset;
  const LabelStyle& label = style.label(number);
  const QString text = QString::number(number);
  const QSizeF size = label.measure(text);
  label.draw(painter, {lW - size.width() - 4.0, top + (cs - size.height()) / 2.0}, text);
  if (HeaderStyle::hasTick(number)) {
    strokeHorizontal(painter, top + cs / 2.0, lW - 5.0, lW - 1.0, style.tick);
  }
}

}  // namespace tolvane
