#pragma once

#include <QImage>
#include <QWidget>

namespace tolvane {

/// What the widget shows now, with its children, in device pixels.
[[nodiscard]] QImage grabbed(QWidget& widget);

/// The device pixel that holds this point of the picture (logical pixels).
[[nodiscard]] QRgb pixelAt(const QImage& picture, double x, double y);

/// Its grey level, 0 to 255; fails the test when it is not a grey.
[[nodiscard]] int greyAt(const QImage& picture, double x, double y);

/// The part of a stretch of one axis that lies between two positions, 0 to 1.
[[nodiscard]] double coverage(double stretchStart, double stretchEnd, double from, double to);

/// A level with another laid over it, as much of it as is covered.
[[nodiscard]] double blended(double below, double above, double covered);

/// The first pixel in which the two pictures differ, for messages; empty when they are equal.
[[nodiscard]] QString firstDifference(const QImage& one, const QImage& other);

}  // namespace tolvane
