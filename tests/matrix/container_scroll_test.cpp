#include <QTest>

#include <gtest/gtest.h>

#include "matrix/overlay_knob.h"
#include "matrix/overlay_scroll_view.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_col_header.h"
#include "matrix/patch_matrix_row_header.h"
#include "matrix/patch_matrix_view.h"
#include "support/qt_events.h"
#include "support/qt_pixels.h"

namespace tolvane {
namespace {

class ContainerScroll : public ::testing::Test {
 protected:
  ContainerScroll() : view_(QRect(0, 0, 576, 298)) {
    view_.configure(128, 128, {{10, 12, 1.0F, true}});
    view_.show();
  }

  [[nodiscard]] QPoint origin() const { return view_.scrollView->contentOrigin(); }
  [[nodiscard]] std::vector<OverlayKnob*> visibleKnobs() const {
    std::vector<OverlayKnob*> visible;
    for (OverlayKnob* knob : view_.findChildren<OverlayKnob*>()) {
      if (knob->isVisible()) {
        visible.push_back(knob);
      }
    }
    return visible;
  }

  PatchMatrixView view_;
};

TEST_F(ContainerScroll, TheStripsTakeTheOffsetAtOnce) {
  view_.scrollView->scrollTo({48, 32});
  EXPECT_EQ(view_.colHeader->scrollOffset, 48.0);
  EXPECT_EQ(view_.rowHeader->scrollOffset, 32.0);
  EXPECT_EQ(view_.canvas->pos(), QPoint(-48, -32));
}

TEST_F(ContainerScroll, StripsAndGridMoveTogetherOnScreen) {
  const QImage still = grabbed(view_);
  view_.scrollView->scrollTo({64, 64});
  const QImage moved = grabbed(view_);
  EXPECT_EQ(pixelAt(moved, 38 + 12 * 16 - 64 + 8, 38 + 10 * 16 - 64 + 8), 0x2ED961U);
  for (int x = 40; x < 400; ++x) {  // the number strip shows what stood four columns further
    ASSERT_EQ(greyAt(moved, x + 0.1, 19.1), greyAt(still, x + 64.1, 19.1)) << x;
  }
}

TEST_F(ContainerScroll, TheWheelScrollsByThreeCellsANotchAndShiftTurnsItSideways) {
  EXPECT_TRUE(turnWheel(*view_.canvas, {0, -120}));
  EXPECT_EQ(origin(), QPoint(0, 48));
  EXPECT_TRUE(turnWheel(*view_.canvas, {0, -120}, Qt::ShiftModifier));
  EXPECT_EQ(origin(), QPoint(48, 48));
  EXPECT_TRUE(turnWheel(*view_.canvas, {120, 60}));
  EXPECT_EQ(origin(), QPoint(0, 24));
}

TEST_F(ContainerScroll, SmallTurnsAddUp) {
  for (int turn = 0; turn < 120; ++turn) {
    turnWheel(*view_.canvas, {0, -1});
  }
  EXPECT_EQ(origin(), QPoint(0, 48));
}

TEST_F(ContainerScroll, AtTheEndTheWheelIsLeftToOthers) {
  EXPECT_FALSE(turnWheel(*view_.canvas, {0, 120}));
  EXPECT_EQ(origin(), QPoint(0, 0));
}

TEST_F(ContainerScroll, ClicksReportTheScrolledCell) {
  view_.scrollView->scrollTo({100 * 16, 90 * 16});
  std::pair<std::int64_t, std::int64_t> toggled;
  view_.onConnectionToggled = [&](std::int64_t input, std::int64_t output) { toggled = {input, output}; };
  clickThroughWindow(view_, {38 + 24, 38 + 40});
  EXPECT_EQ(toggled, (std::pair<std::int64_t, std::int64_t>(92, 95)))
      << "the last column stands at the right edge";
}

TEST_F(ContainerScroll, ConfigureKeepsThePosition) {
  view_.scrollView->scrollTo({320, 160});
  view_.configure(128, 128, {});
  EXPECT_EQ(origin(), QPoint(320, 160));
  EXPECT_EQ(view_.colHeader->scrollOffset, 320.0);
  EXPECT_EQ(view_.rowHeader->scrollOffset, 160.0);
}

TEST_F(ContainerScroll, AShorterGridMovesThePositionBackToItsEndAndTheStripsFollow) {
  view_.scrollView->scrollTo({1500, 1700});
  view_.configure(18, 64, {});
  EXPECT_EQ(origin(), QPoint(64 * 16 - 538, 18 * 16 - 260));
  EXPECT_EQ(view_.colHeader->scrollOffset, 64 * 16 - 538);
  EXPECT_EQ(view_.rowHeader->scrollOffset, 18 * 16 - 260);
  view_.configure(2, 2, {});
  EXPECT_EQ(origin(), QPoint(0, 0));
  EXPECT_EQ(view_.colHeader->scrollOffset, 0.0);
  EXPECT_EQ(view_.rowHeader->scrollOffset, 0.0);
}

TEST_F(ContainerScroll, ASmallGridStandsAtTheTopLeftOfTheBackground) {
  view_.configure(2, 3, {});
  const QImage picture = grabbed(view_);
  EXPECT_EQ(greyAt(picture, 38 + 8, 38 + 8), 66);
  EXPECT_EQ(greyAt(picture, 38 + 3 * 16 + 4, 38 + 8), 38);
  EXPECT_EQ(greyAt(picture, 38 + 8, 38 + 2 * 16 + 4), 38);
  EXPECT_EQ(greyAt(picture, 575, 297), 38);
}

TEST_F(ContainerScroll, BarsTakeNoRoomAndAreHiddenAtRest) {
  EXPECT_EQ(view_.scrollView->viewport()->geometry(), QRect(0, 0, 538, 260));
  EXPECT_TRUE(visibleKnobs().empty());
}

TEST_F(ContainerScroll, BarsFloatOverTheGridWhileScrollingAndGoAway) {
  turnWheel(*view_.canvas, {0, -120});
  ASSERT_EQ(visibleKnobs().size(), 1U);
  EXPECT_EQ(view_.scrollView->viewport()->geometry(), QRect(0, 0, 538, 260));
  EXPECT_GT(visibleKnobs()[0]->x(), 520);
  EXPECT_TRUE(QTest::qWaitFor([this] { return visibleKnobs().empty(); }, 20000));
}

TEST_F(ContainerScroll, ThePointerAtAnEdgeBringsItsBarOut) {
  hoverThroughWindow(view_, {38 + 530, 38 + 100});
  ASSERT_EQ(visibleKnobs().size(), 1U);
  EXPECT_GT(visibleKnobs()[0]->height(), visibleKnobs()[0]->width());
  hoverThroughWindow(view_, {38 + 100, 38 + 255});
  EXPECT_EQ(visibleKnobs().size(), 2U);
}

TEST_F(ContainerScroll, NoBarComesOutWhenNothingCanScroll) {
  view_.configure(2, 3, {});
  hoverThroughWindow(*view_.canvas, {20, 20});
  turnWheel(*view_.canvas, {0, -120});
  EXPECT_TRUE(visibleKnobs().empty());
}

TEST_F(ContainerScroll, DraggingTheKnobToItsEndScrollsToTheEnd) {
  hoverThroughWindow(view_, {38 + 530, 38 + 250});
  ASSERT_FALSE(visibleKnobs().empty());
  OverlayKnob& knob = *visibleKnobs()[0];
  QWindow* window = view_.windowHandle();
  const QPoint grip = knob.mapTo(&view_, knob.rect().center());
  QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, grip);
  QTest::mouseMove(window, grip + QPoint(0, 1000));
  QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, grip + QPoint(0, 1000));
  EXPECT_EQ(origin(), QPoint(0, 128 * 16 - 260));
  EXPECT_EQ(view_.rowHeader->scrollOffset, 128 * 16 - 260);
}

TEST_F(ContainerScroll, BesideTheKnobClicksReachTheCells) {
  turnWheel(*view_.canvas, {0, -120});
  int toggles = 0;
  view_.onConnectionToggled = [&](std::int64_t, std::int64_t) { ++toggles; };
  clickThroughWindow(view_, {38 + 534, 38 + 250});
  EXPECT_EQ(toggles, 1);
}

}  // namespace
}  // namespace tolvane
