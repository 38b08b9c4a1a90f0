#include "matrix/calibrated_color.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

TEST(CalibratedColor, RoundsToTheNearestLevel) {
  EXPECT_EQ(calibratedWhite(0.17), QColor(43, 43, 43));
  EXPECT_EQ(calibratedWhite(0.26), QColor(66, 66, 66));
  EXPECT_EQ(calibratedWhite(1.0), QColor(255, 255, 255));
  EXPECT_EQ(calibratedWhite(0.28, 0.8), QColor(71, 71, 71, 204));
  EXPECT_EQ(calibratedRgb(0.18, 0.85, 0.38), QColor(46, 217, 97));
}

}  // namespace
}  // namespace tolvane
