#include <QRegion>
#include <QtMath>

#include <gtest/gtest.h>

#include "matrix/patch_matrix_canvas.h"
#include "support/qt_pixels.h"

namespace tolvane {
namespace {

constexpr QRgb kUntouched = 0xFFFF00FFU;

QImage canvasPicture(PatchMatrixCanvas& canvas, const QRect& dirty) {
  const double scale = canvas.devicePixelRatioF();
  QImage picture(canvas.size() * scale, QImage::Format_RGB32);
  picture.setDevicePixelRatio(scale);
  picture.fill(kUntouched);
  canvas.render(&picture, dirty.topLeft(), QRegion(dirty), QWidget::RenderFlags());
  return picture;
}

struct Part {
  const char* name;
  QRect dirty;
};

class CanvasCulling : public ::testing::TestWithParam<Part> {
 protected:
  CanvasCulling() : canvas_(QRect(0, 0, 9 * 16, 6 * 16)) {
    canvas_.inputCount = 6;
    canvas_.outputCount = 9;
    canvas_.connections = {"0,0", "1,2", "2,2", "3,8", "5,4"};
  }

  PatchMatrixCanvas canvas_;
};

TEST_P(CanvasCulling, ADirtyPartHasThePixelsOfTheWholeAndNothingElseIsTouched) {
  const QRect dirty = GetParam().dirty;
  const QImage whole = canvasPicture(canvas_, canvas_.rect());
  const QImage part = canvasPicture(canvas_, dirty);
  const double scale = canvas_.devicePixelRatioF();
  // A pixel on the part's edge may mix both.
  const QRect inside(
      QPoint(qCeil(dirty.left() * scale), qCeil(dirty.top() * scale)),
      QPoint(qFloor((dirty.right() + 1) * scale) - 1, qFloor((dirty.bottom() + 1) * scale) - 1));
  const QRect reach = inside.adjusted(-1, -1, 1, 1);
  ASSERT_TRUE(inside.isValid());
  for (int y = 0; y < whole.height(); ++y) {
    for (int x = 0; x < whole.width(); ++x) {
      if (inside.contains(x, y)) {
        ASSERT_EQ(part.pixel(x, y), whole.pixel(x, y)) << x << ", " << y;
      } else if (!reach.contains(x, y)) {
        ASSERT_EQ(part.pixel(x, y), kUntouched) << x << ", " << y;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Parts, CanvasCulling,
                         ::testing::Values(Part{"whole", QRect(0, 0, 144, 96)},
                                           Part{"insideOneCell", QRect(20, 20, 8, 8)},
                                           Part{"oneCell", QRect(16, 16, 16, 16)},
                                           Part{"lastPointBeforeALine", QRect(15, 0, 1, 96)},
                                           Part{"firstPointOnALine", QRect(16, 0, 1, 96)},
                                           Part{"acrossSeveralCells", QRect(30, 30, 40, 6)},
                                           Part{"lastCell", QRect(128, 80, 16, 16)},
                                           Part{"lastPoint", QRect(142, 94, 2, 2)}),
                         [](const auto& part) { return std::string(part.param.name); });

TEST(CanvasRedraw, WaitsForTheContainer) {
  PatchMatrixCanvas canvas(QRect(0, 0, 32, 32));
  canvas.inputCount = 2;
  canvas.outputCount = 2;
  canvas.show();
  ASSERT_EQ(greyAt(grabbed(canvas), 24, 8), 48);
  canvas.connections = {"0,1"};
  canvas.update();
  EXPECT_EQ(pixelAt(grabbed(canvas), 24, 8), 0x2ED961U);
}

}  // namespace
}  // namespace tolvane
