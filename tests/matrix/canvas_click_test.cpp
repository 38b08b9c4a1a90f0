#include <QTest>

#include <gmock/gmock.h>

#include "matrix/patch_matrix_canvas.h"
#include "support/qt_events.h"

namespace tolvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class CanvasClick : public ::testing::Test {
 protected:
  CanvasClick() : canvas_(QRect(0, 0, 1024, 1024)) {
    canvas_.onToggled = [this](std::int64_t row, std::int64_t column) { toggled_.emplace_back(row, column); };
  }

  PatchMatrixCanvas canvas_;
  std::vector<std::pair<std::int64_t, std::int64_t>> toggled_;
};

TEST_F(CanvasClick, ReportsRowThenColumnFromZero) {
  pressAt(canvas_, {20.0, 5.0});
  pressAt(canvas_, {5.0, 20.0});
  EXPECT_THAT(toggled_, ElementsAre(Pair(0, 1), Pair(1, 0)));
}

TEST_F(CanvasClick, TruncatesTowardZero) {
  pressAt(canvas_, {15.999, 31.999});
  pressAt(canvas_, {16.0, 32.0});
  pressAt(canvas_, {-0.5, 8.0});
  pressAt(canvas_, {8.0, -15.9});
  EXPECT_THAT(toggled_, ElementsAre(Pair(1, 0), Pair(2, 1), Pair(0, 0), Pair(0, 0)));
}

TEST_F(CanvasClick, OutsideTheGridDoesNothing) {
  canvas_.inputCount = 3;
  canvas_.outputCount = 5;
  pressAt(canvas_, {80.0, 8.0});
  pressAt(canvas_, {500.0, 8.0});
  pressAt(canvas_, {8.0, 48.0});
  pressAt(canvas_, {-16.0, 8.0});
  pressAt(canvas_, {8.0, -16.0});
  EXPECT_THAT(toggled_, IsEmpty());
  pressAt(canvas_, {79.9, 47.9});
  EXPECT_THAT(toggled_, ElementsAre(Pair(2, 4)));
}

TEST_F(CanvasClick, WithoutACallbackDoesNothing) {
  canvas_.onToggled = nullptr;
  pressAt(canvas_, {20.0, 5.0});
  EXPECT_THAT(canvas_.connections, IsEmpty());
}

TEST_F(CanvasClick, LeavesTheRoutesToTheirOwner) {
  pressAt(canvas_, {20.0, 5.0});
  EXPECT_THAT(canvas_.connections, IsEmpty());
}

TEST_F(CanvasClick, OnlyTheLeftButtonCounts) {
  pressAt(canvas_, {20.0, 5.0}, Qt::RightButton);
  pressAt(canvas_, {20.0, 5.0}, Qt::MiddleButton);
  EXPECT_THAT(toggled_, IsEmpty());
}

TEST_F(CanvasClick, EveryPressOfADoubleClickCounts) {
  canvas_.show();
  clickThroughWindow(canvas_, {20, 5});
  QTest::mouseDClick(canvas_.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 5));
  EXPECT_THAT(toggled_, ElementsAre(Pair(0, 1), Pair(0, 1), Pair(0, 1)));
}

}  // namespace
}  // namespace tolvane
