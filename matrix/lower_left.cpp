#include "matrix/lower_left.h"

#include "base/fatal.h"

namespace tolvane {

QRect fromLowerLeft(const QRect& frame, int parentHeight) noexcept {
  return {frame.x(), parentHeight - frame.y() - frame.height(), frame.width(), frame.height()};
}

void placeFromLowerLeft(QWidget& child, const QRect& frame) {
  const QWidget* parent = child.parentWidget();
  if (parent == nullptr) {
    fatal("a widget without parent has no lower left corner to stand on");
  }
  child.setGeometry(fromLowerLeft(frame, parent->height()));
}

}  // namespace tolvane
