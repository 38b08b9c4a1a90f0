#include <QTest>
#include <algorithm>
#include <stdexcept>

#include <gtest/gtest.h>

#include "matrix/overlay_scroll_view.h"
#include "matrix/overlay_scroller.h"
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

  [[nodiscard]] QRect deviceRect(const QRect& area) const {
    const int scale = qRound(view_.devicePixelRatioF());
    return {area.topLeft() * scale, area.size() * scale};
  }
  [[nodiscard]] QPoint origin() const { return view_.scrollView->contentOrigin(); }
  [[nodiscard]] std::vector<OverlayScroller*> visibleBars() const {
    std::vector<OverlayScroller*> visible;
    for (OverlayScroller* bar : view_.findChildren<OverlayScroller*>()) {
      if (bar->isVisible()) {
        visible.push_back(bar);
      }
    }
    return visible;
  }
  // The vertical bar, at the right edge.
  [[nodiscard]] OverlayScroller& downBar() const {
    const auto bars = visibleBars();
    const auto upright = std::find_if(bars.begin(), bars.end(),
                                      [](const QWidget* bar) { return bar->height() > bar->width(); });
    return upright == bars.end() ? throw std::runtime_error("no upright bar") : **upright;
  }
  // The grey in the middle of the vertical bar's knob.
  [[nodiscard]] int knobGrey() {
    const QPoint middle = downBar().mapTo(&view_, downBar().knobRect().center());
    return greyAt(grabbed(view_), middle.x(), middle.y());
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
  for (int x = 40; x < 400; ++x) {  // the number strip shows what was four columns further right
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

TEST_F(ContainerScroll, BarsTakeNoRoom) {
  EXPECT_EQ(view_.scrollView->viewport()->geometry(), QRect(0, 0, 538, 260));
  turnWheel(*view_.canvas, {0, -120});
  EXPECT_EQ(view_.scrollView->viewport()->geometry(), QRect(0, 0, 538, 260));
}

TEST_F(ContainerScroll, AKnobIsBrightWhileItScrollsAndThenComesToRest) {
  const int resting = knobGrey();
  turnWheel(*view_.canvas, {0, -120});
  turnWheel(*view_.canvas, {0, 120});
  EXPECT_GT(knobGrey(), resting + 40);
  EXPECT_TRUE(QTest::qWaitFor([&] { return knobGrey() == resting; }, 20000));
}

TEST_F(ContainerScroll, AKnobIsBrightUnderThePointer) {
  const int resting = knobGrey();
  hoverThroughWindow(view_, {38 + 200, 38 + 200});
  EXPECT_EQ(knobGrey(), resting);
  hoverThroughWindow(view_, {38 + 534, 38 + 200});
  EXPECT_GT(knobGrey(), resting + 40);
}

TEST_F(ContainerScroll, ThereIsNoBarWhereNothingCanScroll) {
  EXPECT_EQ(visibleBars().size(), 2U);
  view_.configure(2, 128, {});
  EXPECT_EQ(visibleBars().size(), 1U);
  view_.configure(2, 3, {});
  EXPECT_TRUE(visibleBars().empty());
  view_.resize(60, 298);
  EXPECT_EQ(visibleBars().size(), 1U);
}

TEST_F(ContainerScroll, TheWheelOverABarScrollsToo) {
  EXPECT_TRUE(turnWheel(downBar(), {0, -120}));
  EXPECT_EQ(origin(), QPoint(0, 48));
}

TEST_F(ContainerScroll, DraggingTheKnobToItsEndScrollsToTheEnd) {
  QWindow* window = view_.windowHandle();
  const QPoint grip = downBar().mapTo(&view_, downBar().knobRect().center());
  QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, grip);
  QTest::mouseMove(window, grip + QPoint(0, 1000));
  QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, grip + QPoint(0, 1000));
  EXPECT_EQ(origin(), QPoint(0, 128 * 16 - 260));
  EXPECT_EQ(view_.rowHeader->scrollOffset, 128 * 16 - 260);
}

// Here the vertical bar's knob is at its upper end.
TEST_F(ContainerScroll, AClickInTheStripBesideAKnobScrollsByAViewAndTogglesNothing) {
  hoverThroughWindow(view_, {38 + 534, 38 + 200});
  int toggles = 0;
  view_.onConnectionToggled = [&](std::int64_t, std::int64_t) { ++toggles; };
  clickThroughWindow(view_, {38 + 534, 38 + 200});
  EXPECT_EQ(toggles, 0);
  EXPECT_EQ(origin(), QPoint(0, 260));
  clickThroughWindow(view_, {38 + 534, 38 + 4});
  EXPECT_EQ(origin(), QPoint(0, 0));
  clickThroughWindow(view_, {38 + 400, 38 + 256});
  EXPECT_EQ(origin(), QPoint(538, 0));
  EXPECT_EQ(toggles, 0);
}

TEST_F(ContainerScroll, ACellAtTheEdgeIsToggledInItsMiddle) {
  view_.scrollView->scrollTo({128 * 16, 128 * 16});
  std::pair<std::int64_t, std::int64_t> toggled;
  view_.onConnectionToggled = [&](std::int64_t input, std::int64_t output) { toggled = {input, output}; };
  clickThroughWindow(*view_.canvas, {128 * 16 - 8, 128 * 16 - 8});
  EXPECT_EQ(toggled, (std::pair<std::int64_t, std::int64_t>(127, 127)));
}

// At rest, the view shows a hint of the bars over the grid.
TEST_F(ContainerScroll, AtRestAHintStaysThatThereIsMore) {
  const auto overlaid = [this](const QRect& area) {
    return !firstDifference(grabbed(view_).copy(deviceRect(area.translated(38, 38))),
                            grabbed(*view_.canvas).copy(deviceRect(area)))
                .isEmpty();
  };
  const QRect rightEdge(528, 0, 10, 240);
  const QRect lowerEdge(0, 250, 500, 10);
  EXPECT_TRUE(overlaid(rightEdge));
  EXPECT_TRUE(overlaid(lowerEdge));
  view_.configure(16, 128, {});
  EXPECT_FALSE(overlaid(rightEdge)) << "all rows are seen";
  EXPECT_TRUE(overlaid(lowerEdge));
  view_.configure(128, 33, {});
  EXPECT_TRUE(overlaid(rightEdge));
  EXPECT_FALSE(overlaid(lowerEdge)) << "all columns are seen";
}

}  // namespace
}  // namespace tolvane
