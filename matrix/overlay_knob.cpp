#include "matrix/overlay_knob.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "matrix/calibrated_color.h"

namespace tolvane {
namespace {

constexpr int kThickness = 7;
constexpr int kMargin = 2;                     // to the edges of the view
constexpr int kCorner = kThickness + kMargin;  // left free where the two bars would meet
constexpr int kShortest = 24;
constexpr int kRestMs = 900;
constexpr int kFadeMs = 200;

}  // namespace

OverlayKnob::OverlayKnob(QScrollBar& bar, QWidget& view) : QWidget(&view), bar_(bar), view_(view) {
  hide();
  setFocusPolicy(Qt::NoFocus);
  setCursor(Qt::ArrowCursor);
  rest_.setSingleShot(true);
  rest_.setInterval(kRestMs);
  fading_.setStartValue(1.0);
  fading_.setEndValue(0.0);
  fading_.setDuration(kFadeMs);
  connect(&rest_, &QTimer::timeout, this, &OverlayKnob::fade);
  connect(&fading_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
    opacity_ = value.toDouble();
    update();
  });
  connect(&fading_, &QVariantAnimation::finished, this, &QWidget::hide);
  connect(&bar_, &QScrollBar::valueChanged, this, &OverlayKnob::flash);
  connect(&bar_, &QScrollBar::rangeChanged, this, &OverlayKnob::place);
}

void OverlayKnob::flash() {
  fading_.stop();
  opacity_ = 1.0;
  place();
  if (bar_.maximum() > bar_.minimum()) {
    show();
    raise();
    update();
    rest_.start();
  }
}

void OverlayKnob::fade() {
  if (dragged_ || underMouse()) {
    rest_.start();
  } else {
    fading_.start();
  }
}

bool OverlayKnob::isVertical() const {
  return bar_.orientation() == Qt::Vertical;
}

int OverlayKnob::along(const QPoint& point) const {
  return isVertical() ? point.y() : point.x();
}

int OverlayKnob::trackLength() const {
  const int length = isVertical() ? view_.height() : view_.width();
  return std::max(0, length - kMargin - kCorner);
}

int OverlayKnob::knobLength() const {
  const double shown = bar_.pageStep();
  const double all = shown + bar_.maximum();
  const int proportional = all > 0.0 ? qRound(trackLength() * shown / all) : trackLength();
  return std::min(trackLength(), std::max(kShortest, proportional));
}

void OverlayKnob::place() {
  if (bar_.maximum() <= bar_.minimum()) {
    hide();
    return;
  }
  const double part = static_cast<double>(bar_.value()) / bar_.maximum();
  const int start = kMargin + qRound((trackLength() - knobLength()) * part);
  if (isVertical()) {
    setGeometry(view_.width() - kThickness - kMargin, start, kThickness, knobLength());
  } else {
    setGeometry(start, view_.height() - kThickness - kMargin, knobLength(), kThickness);
  }
}

void OverlayKnob::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setOpacity(opacity_);
  const bool lively = dragged_ || underMouse();
  painter.setPen(QPen(calibratedWhite(0.0, 0.35), 1.0));
  painter.setBrush(calibratedWhite(0.9, lively ? 0.75 : 0.5));
  const double radius = (kThickness - 1) / 2.0;
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

void OverlayKnob::mousePressEvent(QMouseEvent* event) {
  dragged_ = event->button() == Qt::LeftButton;
  grip_ = along(event->position().toPoint());
  update();
}

void OverlayKnob::mouseMoveEvent(QMouseEvent* event) {
  const int room = trackLength() - knobLength();
  if (dragged_ && room > 0) {
    const int start = along(view_.mapFromGlobal(event->globalPosition().toPoint())) - grip_ - kMargin;
    bar_.setValue(qRound(static_cast<double>(start) / room * bar_.maximum()));
  }
}

void OverlayKnob::mouseReleaseEvent(QMouseEvent* /*event*/) {
  dragged_ = false;
  update();
  rest_.start();
}

void OverlayKnob::enterEvent(QEnterEvent* /*event*/) {
  flash();
}

void OverlayKnob::leaveEvent(QEvent* /*event*/) {
  update();
}

}  // namespace tolvane
