#include "matrix/device_pixels.h"

#include <cmath>

namespace tolvane {
namespace {

double nearestPixel(double position) {
  // Halves always round up, so content scrolled by whole pixels keeps its place on the pixel grid.
  return std::floor(position + 0.5);
}

}  // namespace

bool isWholePixel(double position) noexcept {
  return std::abs(position - nearestPixel(position)) < 1e-6;
}

void alignToPixels(QPainter& painter) {
  const QTransform toDevice = painter.deviceTransform();
  if (toDevice.type() <= QTransform::TxScale) {
    painter.translate((nearestPixel(toDevice.dx()) - toDevice.dx()) / toDevice.m11(),
                      (nearestPixel(toDevice.dy()) - toDevice.dy()) / toDevice.m22());
  }
}

QRect withCutPixels(const QRect& area) noexcept {
  return area.adjusted(-1, -1, 1, 1);
}

}  // namespace tolvane
