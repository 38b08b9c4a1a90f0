#pragma once

#include <QRect>
#include <QWidget>

namespace tolvane {

/// Converts a frame given from its parent's lower left corner (y grows upward) to Qt's coordinates (y grows
/// downward). All values are points, which are logical pixels. Applying it twice returns the original frame.
/// Only this function flips y. [any-thread]
[[nodiscard]] QRect fromLowerLeft(const QRect& frame, int parentHeight) noexcept;

/// Places the child at a frame given from its parent's lower left corner, for the parent's current height.
/// Call it again whenever the parent is resized: the child keeps its size and its distance to that corner. A
/// child without a parent is a fatal error. [main-thread]
void placeFromLowerLeft(QWidget& child, const QRect& frame);

}  // namespace tolvane
