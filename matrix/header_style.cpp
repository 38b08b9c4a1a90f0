#include "matrix/header_style.h"

#include <QFontDatabase>
#include <QFontMetricsF>

#include "matrix/calibrated_color.h"

namespace tolvane {
namespace {

QFont monospacedFont(QFont::Weight weight) {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setPixelSize(8);
  font.setWeight(weight);
  return font;
}

}  // namespace

QSizeF LabelStyle::measure(const QString& text) const {
  const QFontMetricsF metrics(font);
  return {metrics.horizontalAdvance(text), metrics.height()};
}

void LabelStyle::draw(QPainter& painter, const QPointF& corner, const QString& text) const {
  painter.setFont(font);
  painter.setPen(colour);
  painter.drawText(corner + QPointF(0.0, QFontMetricsF(font).ascent()), text);
}

HeaderStyle::HeaderStyle()
    : background(calibratedWhite(0.11)),
      border(calibratedWhite(0.3)),
      tick(calibratedWhite(0.32)),
      plain_{monospacedFont(QFont::Normal), calibratedWhite(0.55)},
      accent_{monospacedFont(QFont::Bold), calibratedWhite(0.88)} {}

void strokeVertical(QPainter& painter, double x, double top, double bottom, const QColor& colour) {
  painter.fillRect(QRectF(x - 0.5, top, 1.0, bottom - top), colour);
}

void strokeHorizontal(QPainter& painter, double y, double left, double right, const QColor& colour) {
  painter.fillRect(QRectF(left, y - 0.5, right - left, 1.0), colour);
}

}  // namespace tolvane
