// Where cells and labels lie, in points.
#include "matrix/matrix_geometry.h"

#include <QWidget>
#include <limits>

#include <gtest/gtest.h>

namespace tolvane {
namespace {

constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max();

TEST(MatrixGeometry, CellsAreSquaresInRowsAndColumns) {
  EXPECT_EQ(cellRect({0, 0}), QRect(0, 0, 16, 16));
  EXPECT_EQ(cellRect({2, 6}), QRect(96, 32, 16, 16));
  EXPECT_EQ(cellAt({96.0, 32.0}), (MatrixCell{2, 6}));
  EXPECT_EQ(cellAt({111.9, 47.9}), (MatrixCell{2, 6}));
}

TEST(MatrixGeometry, APointJustBeforeTheGridIsInItsFirstCell) {
  EXPECT_EQ(cellAt({-15.9, 0.0}), (MatrixCell{0, 0}));
  EXPECT_EQ(cellAt({-16.0, 0.0}), (MatrixCell{0, -1}));
}

TEST(MatrixGeometry, EndsAtTheLargestWidget) {
  EXPECT_EQ(axisLength(64), 1024);
  EXPECT_LE(axisLength(kHuge), QWIDGETSIZE_MAX);
  EXPECT_GE(cellRect({0, kHuge}).left(), axisLength(kHuge));
}

TEST(MatrixGeometry, LabelsScroll) {
  EXPECT_EQ(columnLabelRect(6, 10.0, 38), QRect(86, 0, 16, 38));
  EXPECT_EQ(rowLabelRect(2, 40.0, 38), QRect(0, -8, 38, 16));
}

TEST(MatrixGeometry, APositionThatIsNoNumberIsFatal) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_DEATH(static_cast<void>(cellAt({std::numeric_limits<double>::quiet_NaN(), 0.0})), "fatal");
}

}  // namespace
}  // namespace tolvane
