#pragma once

#include <QRect>
#include <QWidget>

namespace tolvane {

/// Where a frame stands in its parent as Qt counts (y grows downward), when the frame is given from the lower
/// left corner of a parent of this height (y grows upward). The only place that flips y; all in points, which
/// are logical pixels. Turning the result again gives the frame back. [any-thread]
[[nodiscard]] QRect fromLowerLeft(const QRect& frame, int parentHeight) noexcept;

/// Gives the child the geometry of a frame counted from its parent's lower left corner, by the parent's
/// present height. Called again whenever the parent is resized, it keeps the child's size and its distance to
/// that corner. A child without parent is a fatal error. [main-thread]
void placeFromLowerLeft(QWidget& child, const QRect& frame);

}  // namespace tolvane
