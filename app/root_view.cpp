#include "app/root_view.h"

#include <QResizeEvent>

#include "matrix/lower_left.h"

namespace tolvane {

RootView::RootView(QSize size, QWidget* parent) : LayerView(parent) {
  resize(size);
}

void RootView::place(QWidget* control, const QRect& frame) {
  control->setParent(this);
  placements_.push_back({control, frame});
  arrange(placements_.back());
}

void RootView::resizeEvent(QResizeEvent* event) {
  if (event->size().height() == event->oldSize().height()) return;
  for (const Placement& placement : placements_) arrange(placement);
}

void RootView::arrange(const Placement& placement) const {
  if (placement.control) placeFromLowerLeft(*placement.control, placement.frame);
}

}  // namespace tolvane
