#include "support/qt_pixels.h"

#include <QPixmap>
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace tolvane {

QImage grabbed(QWidget& widget) {
  return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

QRgb pixelAt(const QImage& picture, double x, double y) {
  const double scale = picture.devicePixelRatio();
  const QPoint pixel(static_cast<int>(std::floor(x * scale)), static_cast<int>(std::floor(y * scale)));
  EXPECT_TRUE(picture.rect().contains(pixel)) << x << ", " << y << " is outside the picture";
  return picture.pixel(pixel) & 0xFFFFFFU;
}

int greyAt(const QImage& picture, double x, double y) {
  const QRgb colour = pixelAt(picture, x, y);
  EXPECT_EQ(qRed(colour), qGreen(colour)) << "at " << x << ", " << y;
  EXPECT_EQ(qRed(colour), qBlue(colour)) << "at " << x << ", " << y;
  return qGreen(colour);
}

double coverage(double stretchStart, double stretchEnd, double from, double to) {
  const double common = std::min(stretchEnd, to) - std::max(stretchStart, from);
  return std::max(0.0, common) / (stretchEnd - stretchStart);
}

double blended(double below, double above, double covered) {
  return below + (above - below) * covered;
}

QString firstDifference(const QImage& one, const QImage& other) {
  if (one.size() != other.size()) {
    return QStringLiteral("sizes differ");
  }
  for (int y = 0; y < one.height(); ++y) {
    for (int x = 0; x < one.width(); ++x) {
      if (one.pixel(x, y) != other.pixel(x, y)) {
        return QStringLiteral("(%1, %2): %3 and %4")
            .arg(x)
            .arg(y)
            .arg(one.pixel(x, y), 8, 16)
            .arg(other.pixel(x, y), 8, 16);
      }
    }
  }
  return {};
}

}  // namespace tolvane
