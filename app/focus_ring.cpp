#include "app/focus_ring.h"

#include <QEvent>
#include <QPainter>

#include "app/palette.h"

namespace tolvane {
namespace {

constexpr qreal kRingWidth = 2.0;

}  // namespace

void drawFocusRing(QPainter& painter, const QRectF& frame, qreal cornerRadius) {
  constexpr qreal inset = kRingWidth / 2.0;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(focusColor(), kRingWidth));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(frame.adjusted(inset, inset, -inset, -inset), cornerRadius, cornerRadius);
  painter.restore();
}

FocusRing::FocusRing(QWidget* control, QWidget* frame) : QWidget(frame) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setGeometry(frame->rect());
  setVisible(control->hasFocus());
  control->installEventFilter(this);
  frame->installEventFilter(this);
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
  if (watched == parentWidget()) {
    if (event->type() == QEvent::Resize) setGeometry(parentWidget()->rect());
    return false;
  }
  if (event->type() == QEvent::FocusIn) {
    raise();
    show();
  }
  if (event->type() == QEvent::FocusOut) hide();
  return false;
}

void FocusRing::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  drawFocusRing(painter, rect(), 0.0);
}

}  // namespace tolvane
