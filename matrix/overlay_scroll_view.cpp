#include "matrix/overlay_scroll_view.h"

#include <QResizeEvent>
#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>

#include "matrix/calibrated_color.h"
#include "matrix/matrix_geometry.h"
#include "matrix/overlay_scroller.h"

namespace tolvane {
namespace {

constexpr double kWheelStep = 3.0 * kCellSize;  // points for one notch
constexpr double kNotch = 120.0;                // angle delta of one notch

}  // namespace

OverlayScrollView::OverlayScrollView(const QRect& frame, QWidget* parent)
    : QAbstractScrollArea(parent),
      across_(new OverlayScroller(*horizontalScrollBar(), *viewport())),
      down_(new OverlayScroller(*verticalScrollBar(), *viewport())) {
  setGeometry(frame);
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::NoFocus);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  QPalette colours = viewport()->palette();
  colours.setColor(QPalette::Window, calibratedWhite(0.15));
  viewport()->setPalette(colours);
  viewport()->setBackgroundRole(QPalette::Window);
  viewport()->setAutoFillBackground(true);
}

void OverlayScrollView::setDocumentView(QWidget* document) {
  document_ = document;
  document_->setParent(viewport());
  document_->move(0, 0);
  document_->show();
  updateRanges();
}

void OverlayScrollView::setDocumentSize(const QSize& size) {
  document_->resize(size);
  updateRanges();
}

QPoint OverlayScrollView::contentOrigin() const {
  return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

void OverlayScrollView::scrollTo(const QPoint& origin) {
  horizontalScrollBar()->setValue(origin.x());
  verticalScrollBar()->setValue(origin.y());
}

void OverlayScrollView::reveal(const QRect& area) {
  const auto nearest = [](int origin, int visible, int first, int end) {
    return first < origin ? first : std::max(origin, end - visible);
  };
  const QPoint origin = contentOrigin();
  scrollTo({nearest(origin.x(), width(), area.x(), area.x() + area.width()),
            nearest(origin.y(), height(), area.y(), area.y() + area.height())});
}

void OverlayScrollView::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  updateRanges();
}

void OverlayScrollView::scrollContentsBy(int /*dx*/, int /*dy*/) {
  if (document_ == nullptr) {
    return;
  }
  document_->move(-contentOrigin());
  if (onBoundsChanged) {
    onBoundsChanged();
  }
}

// Scrolls both axes at once and by single points, as touch pads do. Shift turns a plain wheel sideways.
void OverlayScrollView::wheelEvent(QWheelEvent* event) {
  QPoint turned = event->angleDelta();
  if (event->modifiers().testFlag(Qt::ShiftModifier) && turned.x() == 0) {
    turned = turned.transposed();
  }
  wheelRest_ += QPointF(turned) * kWheelStep / kNotch;
  const QPoint whole(static_cast<int>(wheelRest_.x()), static_cast<int>(wheelRest_.y()));
  wheelRest_ -= whole;
  const QPoint before = contentOrigin();
  scrollTo(before - whole);
  event->setAccepted(contentOrigin() != before);
}

void OverlayScrollView::updateRanges() {
  if (document_ == nullptr) {
    return;
  }
  const auto update = [](QScrollBar* bar, int document, int visible) {
    bar->setSingleStep(static_cast<int>(kCellSize));
    bar->setPageStep(visible);
    bar->setRange(0, std::max(0, document - visible));
  };
  update(horizontalScrollBar(), document_->width(), width());
  update(verticalScrollBar(), document_->height(), height());
  across_->place();
  down_->place();
}

}  // namespace tolvane
