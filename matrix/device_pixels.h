#pragma once

#include <QPainter>
#include <QRectF>

namespace tolvane {

/// Whether the position (device pixels) is a whole number but for what rounding adds. [any-thread]
[[nodiscard]] bool isWholePixel(double position) noexcept;

/// Moves the painter's origin to the nearest whole device pixel. At scales like 125 % a widget may start
/// within a pixel. [main-thread]
void alignToPixels(QPainter& painter);

/// The area (points) and one more point on each side. A repaint is clipped to whole pixels, so whoever paints
/// an area that ends within a pixel has to paint beyond it to fill that pixel. [any-thread]
[[nodiscard]] QRect withCutPixels(const QRect& area) noexcept;

}  // namespace tolvane
