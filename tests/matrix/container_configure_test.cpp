#include <limits>

#include <gmock/gmock.h>

#include "matrix/overlay_scroll_view.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_col_header.h"
#include "matrix/patch_matrix_row_header.h"
#include "matrix/patch_matrix_view.h"
#include "support/qt_events.h"
#include "support/qt_pixels.h"

namespace tolvane {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

constexpr QRgb kGreen = 0x2ED961;

TEST(ContainerConfigure, StartsAs64By64WithoutRoutes) {
  const PatchMatrixView view(QRect(18, 112, 576, 298));
  EXPECT_EQ(view.inputCount, 64);
  EXPECT_EQ(view.outputCount, 64);
  EXPECT_TRUE(view.connections.empty());
  EXPECT_FALSE(view.onConnectionToggled);
  EXPECT_EQ(view.geometry(), QRect(18, 112, 576, 298));
  EXPECT_EQ(view.canvas->geometry(), QRect(0, 0, 1024, 1024));
  EXPECT_EQ(PatchMatrixView::cellSize, 16.0);
  EXPECT_EQ(PatchMatrixView::labelW, 38.0);
  EXPECT_EQ(PatchMatrixView::labelH, 38.0);
}

TEST(ContainerConfigure, RaisesCountsBelowOne) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.configure(0, 0, {});
  EXPECT_EQ(view.inputCount, 1);
  EXPECT_EQ(view.outputCount, 1);
  EXPECT_EQ(view.canvas->geometry(), QRect(0, 0, 16, 16));
  view.configure(-5, std::numeric_limits<std::int64_t>::min(), {});
  EXPECT_EQ(view.inputCount, 1);
  EXPECT_EQ(view.outputCount, 1);
}

TEST(ContainerConfigure, HandsCountsAndKeysToItsParts) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.configure(2, 8, {{0, 1, 1.0F, true}, {1, 7, 0.5F, true}});
  EXPECT_EQ(view.canvas->geometry(), QRect(0, 0, 128, 32));
  EXPECT_EQ(view.canvas->inputCount, 2);
  EXPECT_EQ(view.canvas->outputCount, 8);
  EXPECT_THAT(view.canvas->connections, UnorderedElementsAre("0,1", "1,7"));
  EXPECT_THAT(view.connections, UnorderedElementsAre("0,1", "1,7"));
  EXPECT_EQ(view.colHeader->outputCount, 8);
  EXPECT_EQ(view.rowHeader->inputCount, 2);
}

TEST(ContainerConfigure, MakesOneKeyOfRoutesWithTheSameChannelsWhateverTheirGainOrState) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.configure(4, 4, {{1, 2, 1.0F, true}, {1, 2, 0.25F, true}, {3, 0, 1.0F, false}});
  EXPECT_THAT(view.connections, UnorderedElementsAre("1,2", "3,0"));
  const QImage picture = grabbed(view);
  EXPECT_EQ(pixelAt(picture, 38 + 2 * 16 + 8, 38 + 16 + 8), kGreen);
  EXPECT_EQ(pixelAt(picture, 38 + 8, 38 + 3 * 16 + 8), kGreen);
}

TEST(ContainerConfigure, ReplacesTheRoutesShown) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.configure(4, 4, {{1, 2, 1.0F, true}});
  view.show();
  ASSERT_EQ(pixelAt(grabbed(view), 38 + 2 * 16 + 8, 38 + 16 + 8), kGreen);
  view.configure(4, 4, {{0, 3, 1.0F, true}});
  const QImage picture = grabbed(view);
  EXPECT_EQ(pixelAt(picture, 38 + 3 * 16 + 8, 38 + 8), kGreen);
  EXPECT_EQ(greyAt(picture, 38 + 2 * 16 + 8, 38 + 16 + 8), 48);
}

TEST(ContainerConfigure, KeepsKeysOfRoutesBeyondTheCounts) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  view.configure(2, 2, {{70, 3, 1.0F, true}, {-1, -20, 1.0F, true}, {kMost, 0, 1.0F, true}});
  EXPECT_THAT(view.connections, UnorderedElementsAre("70,3", "-1,-20", "9223372036854775807,0"));
  EXPECT_EQ(greyAt(grabbed(view), 38 + 24, 38 + 8), 48);
}

TEST(ContainerConfigure, AGridBeyondAnyWidgetIsCutNotOverrun) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.configure(std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::max(), {});
  EXPECT_EQ(view.canvas->width(), QWIDGETSIZE_MAX / 16 * 16);
  EXPECT_EQ(view.canvas->height(), QWIDGETSIZE_MAX / 16 * 16);
  EXPECT_EQ(greyAt(grabbed(view), 38 + 8, 38 + 8), 66);
}

TEST(ContainerConfigure, WithoutItsPartsIsFatal) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.canvas = nullptr;
  EXPECT_DEATH(view.configure(2, 2, {}), "fatal");
}

TEST(ContainerClick, ForwardsInputAndOutputUnchanged) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.configure(18, 20, {});
  view.show();
  const QPoint cell(38 + 5 * 16 + 8, 38 + 3 * 16 + 8);
  clickThroughWindow(view, cell);  // no listener yet
  std::vector<std::pair<std::int64_t, std::int64_t>> toggled;
  view.onConnectionToggled = [&](std::int64_t input, std::int64_t output) {
    toggled.emplace_back(input, output);
  };
  clickThroughWindow(view, cell);
  EXPECT_THAT(toggled, ElementsAre(Pair(3, 5)));
}

TEST(ContainerClick, TheListenerMayConfigure) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.configure(18, 20, {});
  view.show();
  view.onConnectionToggled = [&](std::int64_t input, std::int64_t output) {
    view.configure(18, 20, {{input, output, 1.0F, true}});
  };
  clickThroughWindow(view, {38 + 5 * 16 + 8, 38 + 3 * 16 + 8});
  EXPECT_EQ(pixelAt(grabbed(view), 38 + 5 * 16 + 8, 38 + 3 * 16 + 8), kGreen);
}

TEST(ContainerClick, OutsideTheGridIsNobodysCell) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.configure(2, 2, {});
  view.show();
  int toggles = 0;
  view.onConnectionToggled = [&](std::int64_t, std::int64_t) { ++toggles; };
  clickThroughWindow(view, {38 + 40, 38 + 8});
  clickThroughWindow(view, {10, 38 + 8});
  clickThroughWindow(view, {38 + 8, 10});
  EXPECT_EQ(toggles, 0);
}

}  // namespace
}  // namespace tolvane
