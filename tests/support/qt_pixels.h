#pragma once

#include <QImage>
#include <QWidget>

namespace tolvane {

/// A picture of the widget and its children as shown now, in device pixels.
[[nodiscard]] QImage grabbed(QWidget& widget);

/// The device pixel at this point of the picture, given in logical pixels.
[[nodiscard]] QRgb pixelAt(const QImage& picture, double x, double y);

/// The grey level of that pixel, 0 to 255. Fails the test if the pixel is not grey.
[[nodiscard]] int greyAt(const QImage& picture, double x, double y);

/// The share of a stretch on one axis that lies between the positions `from` and `to`, 0 to 1.
[[nodiscard]] double coverage(double stretchStart, double stretchEnd, double from, double to);

/// The grey level of `above` drawn over `below` with the coverage `covered`, 0 to 1.
[[nodiscard]] double blended(double below, double above, double covered);

/// Describes the first pixel in which the pictures differ; empty if they are equal.
[[nodiscard]] QString firstDifference(const QImage& one, const QImage& other);

}  // namespace tolvane
