#include "matrix/lower_left.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

TEST(LowerLeft, CountsFromTheTopWhatIsGivenFromTheBottom) {
  EXPECT_EQ(fromLowerLeft({0, 685, 920, 35}, 720), QRect(0, 0, 920, 35));
  EXPECT_EQ(fromLowerLeft({0, 0, 920, 56}, 720), QRect(0, 664, 920, 56));
  EXPECT_EQ(fromLowerLeft({18, 310, 576, 298}, 720), QRect(18, 112, 576, 298));
}

TEST(LowerLeft, TurningTwiceGivesTheFrameBack) {
  const QRect frame(18, 310, 576, 298);
  EXPECT_EQ(fromLowerLeft(fromLowerLeft(frame, 500), 500), frame);
}

TEST(LowerLeft, ASmallerParentCutsTheTop) {
  EXPECT_EQ(fromLowerLeft({0, 685, 920, 35}, 500), QRect(0, -220, 920, 35));
}

TEST(LowerLeft, AChildKeepsItsDistanceWhenPlacedAgain) {
  QWidget parent;
  parent.resize(100, 200);
  QWidget child(&parent);
  placeFromLowerLeft(child, {10, 20, 30, 40});
  EXPECT_EQ(child.geometry(), QRect(10, 140, 30, 40));
  parent.resize(100, 300);
  placeFromLowerLeft(child, {10, 20, 30, 40});
  EXPECT_EQ(child.geometry(), QRect(10, 240, 30, 40));
}

TEST(LowerLeft, AWidgetWithoutParentIsFatal) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  QWidget orphan;
  EXPECT_DEATH(placeFromLowerLeft(orphan, {0, 0, 1, 1}), "fatal");
}

}  // namespace
}  // namespace tolvane
