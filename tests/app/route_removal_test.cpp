// Remove, Clear, and the selection that Remove uses.
#include "app/window_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RouteRemovalTest : public WindowTest {
 protected:
  RouteRemovalTest() {
    openQuietly();
    for (const int channel : {0, 1, 2, 3}) clickCell(channel, channel);
    statusTexts();
  }

  [[nodiscard]] int selectedRow() const {
    return control<ConnectionsTableView>("connectionsTableView").selectedRow();
  }
};

TEST_F(RouteRemovalTest, RemovesTheSelectedRoute) {
  clickTableRow(1);
  press("removeConnection");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0), plainRoute(2, 2), plainRoute(3, 3)));
  EXPECT_THAT(statusTexts(), ElementsAre("3 connection(s) configured — press Start to route."));
}

TEST_F(RouteRemovalTest, WithoutSelectionNothingHappens) {
  EXPECT_EQ(selectedRow(), -1);
  press("removeConnection");
  EXPECT_EQ(routes().size(), 4U);
  EXPECT_THAT(statusTexts(), IsEmpty());
}

TEST_F(RouteRemovalTest, CanBePressedAgainAndAgain) {
  clickTableRow(1);
  press("removeConnection");
  EXPECT_EQ(selectedRow(), 1);
  press("removeConnection");
  EXPECT_EQ(selectedRow(), 1);
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0), plainRoute(3, 3)));
  press("removeConnection");
  EXPECT_EQ(selectedRow(), -1) << "there is no second row any more";
  press("removeConnection");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0)));
}

TEST_F(RouteRemovalTest, TheSelectionStaysOverAnyReload) {
  clickTableRow(2);
  clickCell(5, 6);
  EXPECT_EQ(selectedRow(), 2);
  press("presetThru12");
  EXPECT_EQ(selectedRow(), -1);
}

TEST_F(RouteRemovalTest, AClickBesideTheRowsSelectsNone) {
  clickTableRow(2);
  EXPECT_EQ(selectedRow(), 2);
  auto& table = control<ConnectionsTableView>("connectionsTableView");
  clickAt(*table.viewport(), {10, table.viewport()->height() - 5});
  EXPECT_EQ(selectedRow(), -1);
}

TEST_F(RouteRemovalTest, LeavesAStoppedEngineAlone) {
  hal.takeCalls();
  for (const bool selected : {false, true}) {
    if (selected) clickTableRow(1);
    press("removeConnection");
    EXPECT_THAT(hal.takeCalls(), IsEmpty());
    EXPECT_FALSE(CoreAudioEngine::shared().isRunning());
    EXPECT_EQ(CoreAudioEngine::shared().contextPtr(), nullptr);
  }
  EXPECT_EQ(routes().size(), 3U);
}

TEST_F(RouteRemovalTest, DoesNotRestartARunningEngine) {
  press("startStopTapped");
  const IOProcContext* const context = CoreAudioEngine::shared().contextPtr();
  const auto liveBuffer = context->activeBuf;
  hal.takeCalls();
  press("removeConnection");
  EXPECT_EQ(context->activeBuf, liveBuffer) << "with nothing selected nothing is published";
  clickTableRow(1);
  press("removeConnection");
  EXPECT_EQ(context->activeBuf, 1 - liveBuffer);
  EXPECT_THAT(hal.takeCalls(), IsEmpty());
  EXPECT_EQ(CoreAudioEngine::shared().contextPtr(), context);
}

TEST_F(RouteRemovalTest, ClearRemovesAllWithoutAsking) {
  clickTableRow(2);
  press("clearConnections");
  EXPECT_THAT(routes(), IsEmpty());
  EXPECT_THAT(tableTexts(), IsEmpty());
  EXPECT_THAT(control<PatchMatrixView>("patchMatrixView").connections, IsEmpty());
  EXPECT_EQ(selectedRow(), -1);
  EXPECT_THAT(statusTexts(), ElementsAre("0 connection(s) configured — press Start to route."));
}

}  // namespace
}  // namespace tolvane::test
