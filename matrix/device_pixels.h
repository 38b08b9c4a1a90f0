#pragma once

#include <QPainter>
#include <QRectF>

namespace tolvane {

/// Whether the position (device pixels) is a whole number within rounding error. [any-thread]
[[nodiscard]] bool isWholePixel(double position) noexcept;

/// Moves the painter's origin to the nearest whole device pixel. At scales like 125 % a widget may start
/// within a pixel. [main-thread]
void alignToPixels(QPainter& painter);

/// The area (points), grown by one point on each side. A repaint is clipped to whole pixels. To fill a pixel
/// that the area's edge cuts, a painter must paint beyond that edge. [any-thread]
[[nodiscard]] QRect withCutPixels(const QRect& area) noexcept;

}  // namespace tolvane
