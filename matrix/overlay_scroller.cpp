#include "matrix/overlay_scroller.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "matrix/calibrated_color.h"

namespace tolvane {
namespace {

constexpr int kThickness = 5;
constexpr int kMargin = 1;  // to the strip's edges, points
// Less than half a cell, so the middle of a cell at the view's edge can still be clicked.
constexpr int kStrip = kThickness + 2 * kMargin;
constexpr int kShortest = 24;
constexpr double kRestingOpacity = 0.35;
constexpr double kBrightOpacity = 0.75;
constexpr int kLullMs = 900;
constexpr int kFadeMs = 200;

}  // namespace

OverlayScroller::OverlayScroller(QScrollBar& bar, QWidget& view) : QWidget(&view), bar_(bar), view_(view) {
  hide();
  setFocusPolicy(Qt::NoFocus);
  setCursor(Qt::ArrowCursor);
  lull_.setSingleShot(true);
  lull_.setInterval(kLullMs);
  fading_.setStartValue(1.0);
  fading_.setEndValue(0.0);
  fading_.setDuration(kFadeMs);
  connect(&lull_, &QTimer::timeout, this, &OverlayScroller::rest);
  connect(&fading_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
    brightness_ = value.toDouble();
    update();
  });
  connect(&bar_, &QScrollBar::valueChanged, this, &OverlayScroller::brighten);
}

void OverlayScroller::place() {
  const QRect edge = isVertical() ? QRect(view_.width() - kStrip, 0, kStrip, view_.height())
                                  : QRect(0, view_.height() - kStrip, view_.width(), kStrip);
  setGeometry(edge);
  setVisible(bar_.maximum() > bar_.minimum());
  raise();
  update();
}

void OverlayScroller::brighten() {
  fading_.stop();
  brightness_ = 1.0;
  update();
  lull_.start();
}

void OverlayScroller::rest() {
  if (!dragged_ && !underMouse()) {
    fading_.start();
  }
}

bool OverlayScroller::isVertical() const {
  return bar_.orientation() == Qt::Vertical;
}

int OverlayScroller::along(const QPoint& point) const {
  return isVertical() ? point.y() : point.x();
}

// Leaves the end free, where the two strips cross.
int OverlayScroller::trackLength() const {
  const int length = isVertical() ? height() : width();
  return std::max(0, length - kMargin - kStrip);
}

int OverlayScroller::knobLength() const {
  const double shown = bar_.pageStep();
  const double all = shown + bar_.maximum();
  const int proportional = all > 0.0 ? qRound(trackLength() * shown / all) : trackLength();
  return std::min(trackLength(), std::max(kShortest, proportional));
}

int OverlayScroller::knobStart() const {
  const double part = static_cast<double>(bar_.value()) / std::max(1, bar_.maximum());
  return kMargin + qRound((trackLength() - knobLength()) * part);
}

QRect OverlayScroller::knobRect() const {
  return isVertical() ? QRect(kMargin, knobStart(), kThickness, knobLength())
                      : QRect(knobStart(), kMargin, knobLength(), kThickness);
}

void OverlayScroller::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double opacity = kRestingOpacity + (kBrightOpacity - kRestingOpacity) * brightness_;
  painter.setPen(QPen(calibratedWhite(0.0, opacity / 2.0), 1.0));
  painter.setBrush(calibratedWhite(0.9, opacity));
  const double radius = (kThickness - 1) / 2.0;
  painter.drawRoundedRect(QRectF(knobRect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

void OverlayScroller::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    return;
  }
  grip_ = along(event->position().toPoint()) - knobStart();
  dragged_ = grip_ >= 0 && grip_ < knobLength();
  if (!dragged_) {
    bar_.triggerAction(grip_ < 0 ? QAbstractSlider::SliderPageStepSub : QAbstractSlider::SliderPageStepAdd);
  }
}

void OverlayScroller::mouseMoveEvent(QMouseEvent* event) {
  const int room = trackLength() - knobLength();
  if (dragged_ && room > 0) {
    const int start = along(event->position().toPoint()) - grip_ - kMargin;
    bar_.setValue(qRound(static_cast<double>(start) / room * bar_.maximum()));
  }
}

void OverlayScroller::mouseReleaseEvent(QMouseEvent* /*event*/) {
  dragged_ = false;
  lull_.start();
}

void OverlayScroller::enterEvent(QEnterEvent* /*event*/) {
  brighten();
}

void OverlayScroller::leaveEvent(QEvent* /*event*/) {
  lull_.start();
}

}  // namespace tolvane
