#include "app/layer_view.h"

#include <QPainter>

namespace tolvane {

LayerView::LayerView(QWidget* parent) : QWidget(parent) {}

void LayerView::setBackgroundColor(const QColor& color) {
  background_ = color;
  update();
}

void LayerView::setCornerRadius(qreal radius) {
  cornerRadius_ = radius;
  update();
}

void LayerView::setBorder(const QColor& color, qreal width) {
  border_ = color;
  borderWidth_ = width;
  update();
}

void LayerView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  if (cornerRadius_ <= 0.0 && borderWidth_ <= 0.0) {
    painter.fillRect(rect(), background_);
    return;
  }
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(background_);
  painter.setPen(borderWidth_ > 0.0 ? QPen(border_, borderWidth_) : QPen(Qt::NoPen));
  // A pen is drawn half to each side of the outline.
  const qreal inset = borderWidth_ / 2.0;
  painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius_,
                          cornerRadius_);
}

}  // namespace tolvane
