#include <gtest/gtest.h>

#include "matrix/cell_painter.h"
#include "matrix/patch_matrix_canvas.h"
#include "support/qt_pixels.h"

namespace tolvane {
namespace {

// Levels of the greys, 0 to 255.
constexpr int kBackground = 43;
constexpr int kGrid = 56;
constexpr int kDiagonal = 66;
constexpr int kOffDiagonal = 48;
constexpr int kOutline = 71;
constexpr QRgb kGreen = 0x2ED961;

QImage drawn(std::int64_t rows, std::int64_t columns, const RouteKeys& keys) {
  PatchMatrixCanvas canvas(QRect(0, 0, static_cast<int>(columns) * 16, static_cast<int>(rows) * 16));
  canvas.inputCount = rows;
  canvas.outputCount = columns;
  canvas.connections = keys;
  return grabbed(canvas);
}

// Expected level of one device pixel half way down (or across) the cells, from the cells' fill levels along
// the axis. A negative fill is an active cell; its level is the green channel.
double expectedLevel(double start, double end, const std::vector<int>& fills) {
  double level = kBackground;
  for (std::size_t cell = 0; cell < fills.size(); ++cell) {
    const double line = 16.0 * static_cast<double>(cell);
    level = blended(level, kGrid, coverage(start, end, line - 0.25, line + 0.25));
  }
  for (std::size_t cell = 0; cell < fills.size(); ++cell) {
    const double left = 16.0 * static_cast<double>(cell) + 1.0;
    const double right = left + 14.0;
    const bool active = fills[cell] < 0;
    level = blended(level, active ? qGreen(kGreen) : fills[cell], coverage(start, end, left, right));
    if (!active) {
      const double outline =
          coverage(start, end, left - 0.25, left + 0.25) + coverage(start, end, right - 0.25, right + 0.25);
      level = blended(level, kOutline, 0.8 * outline);
    }
  }
  return level;
}

TEST(CanvasDrawing, CellsHaveTheirColours) {
  const QImage picture = drawn(2, 2, {"0,1"});
  EXPECT_EQ(pixelAt(picture, 24, 8), kGreen);
  EXPECT_EQ(greyAt(picture, 8, 8), kDiagonal);
  EXPECT_EQ(greyAt(picture, 24, 24), kDiagonal);
  EXPECT_EQ(greyAt(picture, 8, 24), kOffDiagonal);
}

TEST(CanvasDrawing, EveryPixelAcrossARowHasTheCoverageOfItsShapes) {
  const QImage picture = drawn(2, 2, {"0,1"});
  const double pixel = 1.0 / picture.devicePixelRatio();
  for (int x = 0; x < picture.width(); ++x) {
    const double expected = expectedLevel(x * pixel, (x + 1) * pixel, {kDiagonal, -1});
    EXPECT_NEAR(qGreen(pixelAt(picture, (x + 0.5) * pixel, 8)), expected, 1.5) << "device pixel " << x;
  }
}

TEST(CanvasDrawing, EveryPixelDownAColumnHasTheCoverageOfItsShapes) {
  const QImage picture = drawn(3, 2, {"2,0"});
  const double pixel = 1.0 / picture.devicePixelRatio();
  for (int y = 0; y < picture.height(); ++y) {
    const double expected = expectedLevel(y * pixel, (y + 1) * pixel, {kDiagonal, kOffDiagonal, -1});
    EXPECT_NEAR(qGreen(pixelAt(picture, 8, (y + 0.5) * pixel)), expected, 1.5) << "device pixel " << y;
  }
}

TEST(CanvasDrawing, LinesLieOnTheLeftAndTopEdgesAndNoneClosesTheGrid) {
  const QImage picture = drawn(2, 2, {"0,0", "0,1", "1,0", "1,1"});
  const double inside = 0.3 / picture.devicePixelRatio();
  EXPECT_GT(greyAt(picture, 0.0, 8), kBackground);
  EXPECT_GT(greyAt(picture, 16.0, 8), kBackground);
  EXPECT_GT(greyAt(picture, 8, 0.0), kBackground);
  EXPECT_GT(greyAt(picture, 8, 16.0), kBackground);
  EXPECT_EQ(greyAt(picture, 32.0 - inside, 8), kBackground);
  EXPECT_EQ(greyAt(picture, 8, 32.0 - inside), kBackground);
}

TEST(CanvasDrawing, CornersOfCellsAreRound) {
  const QImage picture = drawn(2, 2, {"0,0"});
  EXPECT_NE(pixelAt(picture, 1.1, 1.1), kGreen);
  EXPECT_NE(pixelAt(picture, 14.9, 14.9), kGreen);
  EXPECT_EQ(pixelAt(picture, 3.5, 1.8), kGreen);
  EXPECT_EQ(pixelAt(picture, 1.8, 3.5), kGreen);
}

TEST(CanvasDrawing, KeysOutsideTheCountsAreNotDrawn) {
  EXPECT_EQ(firstDifference(drawn(64, 64, {"70,3", "3,64", "-1,0"}), drawn(64, 64, {})), QString());
}

TEST(CanvasDrawing, KeysMatchAsExactStrings) {
  EXPECT_EQ(firstDifference(drawn(4, 4, {"01,1", " 1,1", "1, 2", "+2,2"}), drawn(4, 4, {})), QString());
  EXPECT_EQ(pixelAt(drawn(4, 4, {"1,1"}), 24, 24), kGreen);
}

TEST(CanvasDrawing, ACountOfZeroLeavesTheBackgroundAlone) {
  PatchMatrixCanvas canvas(QRect(0, 0, 40, 24));
  canvas.inputCount = 0;
  canvas.outputCount = 4;
  const QImage picture = grabbed(canvas);
  for (const double x : {0.0, 8.0, 16.0, 39.0}) {
    for (const double y : {0.0, 16.0, 23.0}) {
      EXPECT_EQ(greyAt(picture, x, y), kBackground) << x << ", " << y;
    }
  }
}

TEST(CanvasDrawing, LinesOfTheGridRunOnAcrossALargerCanvas) {
  PatchMatrixCanvas canvas(QRect(0, 0, 64, 64));
  canvas.inputCount = 2;
  canvas.outputCount = 2;
  const QImage picture = grabbed(canvas);
  EXPECT_GT(greyAt(picture, 60, 16.0), kBackground);
  EXPECT_GT(greyAt(picture, 16.0, 60), kBackground);
  EXPECT_EQ(greyAt(picture, 32.0, 60), kBackground);
  EXPECT_EQ(greyAt(picture, 60, 32.0), kBackground);
  EXPECT_EQ(greyAt(picture, 40, 8), kBackground);
}

TEST(CanvasDrawing, FirstShows64By64WithoutRoutes) {
  PatchMatrixCanvas canvas(QRect(0, 0, 1024, 1024));
  EXPECT_EQ(canvas.inputCount, 64);
  EXPECT_EQ(canvas.outputCount, 64);
  EXPECT_TRUE(canvas.connections.empty());
  EXPECT_EQ(canvas.cs, 16.0);
  EXPECT_EQ(firstDifference(grabbed(canvas), drawn(64, 64, {})), QString());
}

// The picture drawn shape by shape, without copies of cells.
QImage drawnShapeByShape(const PatchMatrixCanvas& canvas, double scale) {
  QImage picture(canvas.size() * scale, QImage::Format_RGB32);
  picture.setDevicePixelRatio(scale);
  QPainter painter(&picture);
  CellPainter cells(painter, canvas.cs);
  cells.paintBackground(canvas.rect());
  cells.paintGrid(canvas.rect(), {0, canvas.outputCount - 1}, {0, canvas.inputCount - 1});
  for (std::int64_t row = 0; row < canvas.inputCount; ++row) {
    for (std::int64_t column = 0; column < canvas.outputCount; ++column) {
      const CellLook still = row == column ? CellLook::diagonal : CellLook::offDiagonal;
      cells.paintCell({16.0 * static_cast<double>(column), 16.0 * static_cast<double>(row)},
                      canvas.isActive({row, column}) ? CellLook::active : still);
    }
  }
  return picture;
}

class CanvasAtAnyScale : public ::testing::TestWithParam<double> {};

TEST_P(CanvasAtAnyScale, HasThePixelsOfEveryShapeDrawnInTurn) {
  PatchMatrixCanvas canvas(QRect(0, 0, 7 * 16, 5 * 16));
  canvas.inputCount = 5;
  canvas.outputCount = 7;
  canvas.connections = {"0,0", "1,3", "4,6", "2,6", "4,0"};
  QImage picture(canvas.size() * GetParam(), QImage::Format_RGB32);
  picture.setDevicePixelRatio(GetParam());
  canvas.render(&picture);
  EXPECT_EQ(firstDifference(picture, drawnShapeByShape(canvas, GetParam())), QString());
}

INSTANTIATE_TEST_SUITE_P(Scales, CanvasAtAnyScale, ::testing::Values(1.0, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0),
                         [](const auto& scale) {
                           return "hundredths" + std::to_string(qRound(scale.param * 100));
                         });

}  // namespace
}  // namespace tolvane
