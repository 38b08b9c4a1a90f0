#include "matrix/calibrated_color.h"

namespace tolvane {
namespace {

int level(double value) noexcept {
  return qRound(value * 255.0);
}

}  // namespace

QColor calibratedWhite(double white, double alpha) noexcept {
  return calibratedRgb(white, white, white, alpha);
}

QColor calibratedRgb(double red, double green, double blue, double alpha) noexcept {
  return {level(red), level(green), level(blue), level(alpha)};
}

}  // namespace tolvane
