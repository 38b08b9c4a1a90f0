// The Add button and the three entry fields.
#include <cmath>
#include <limits>

#include "app/window_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kWarning = "⚠️  Enter valid channel numbers.";

class RouteEntryTest : public WindowTest {
 protected:
  RouteEntryTest() { openQuietly(); }

  /// The gain of a route that is added with this text as its gain.
  float gainFrom(const std::string& typed) {
    addRoute("1", "1", typed);
    EXPECT_EQ(routes().size(), 1U) << typed;
    const float gain = routes().empty() ? 0.0F : routes().front().gain;
    press("clearConnections");
    return gain;
  }
};

TEST_F(RouteEntryTest, StoresZeroBasedChannelsAndTheGain) {
  addRoute("3", "5", "0.25");
  EXPECT_THAT(routes(), ElementsAre(PatchConnection{2, 4, 0.25F, true}));
  EXPECT_THAT(statusTexts(), ElementsAre("1 connection(s) configured — press Start to route."));
}

TEST_F(RouteEntryTest, AddsWhatTheFieldsSayAtFirst) {
  press("addConnection");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 32)));
}

TEST_F(RouteEntryTest, KeepsTheFieldsAndAppendsInOrder) {
  addRoute("3", "5", "0.25");
  EXPECT_EQ(control<QLineEdit>("inputChannelField").text(), "3");
  EXPECT_EQ(control<QLineEdit>("outputChannelField").text(), "5");
  EXPECT_EQ(control<QLineEdit>("gainField").text(), "0.25");
  addRoute("1", "2", "1.0");
  EXPECT_THAT(routes(), ElementsAre(PatchConnection{2, 4, 0.25F, true}, plainRoute(0, 1)));
}

TEST_F(RouteEntryTest, WarnsOfChannelsThatAreNoChannels) {
  for (const char* const typed : {"", "0", "-3", " 2", "2 ", "2.0", "abc", "9223372036854775808"}) {
    addRoute(typed, "1", "1.0");
    EXPECT_THAT(statusTexts(), ElementsAre(kWarning)) << "input " << typed;
    addRoute("1", typed, "1.0");
    EXPECT_THAT(statusTexts(), ElementsAre(kWarning)) << "output " << typed;
  }
  EXPECT_THAT(routes(), IsEmpty());
}

TEST_F(RouteEntryTest, AWarningLeavesRoutesTableAndMatrixAlone) {
  addRoute("3", "5", "1.0");
  statusTexts();
  addRoute("0", "5", "1.0");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(2, 4)));
  EXPECT_EQ(tableTexts().size(), 1U);
  EXPECT_THAT(control<PatchMatrixView>("patchMatrixView").connections, ElementsAre("2,4"));
}

TEST_F(RouteEntryTest, TakesAPlusSign) {
  addRoute("+2", "+4", "+0.5");
  EXPECT_THAT(routes(), ElementsAre(PatchConnection{1, 3, 0.5F, true}));
}

TEST_F(RouteEntryTest, KnowsNoUpperBound) {
  hal.devices = {scriptedDevice(9, "Small", {2}, {2})};
  press("refreshDevices");
  addRoute("99", "9223372036854775807", "1.0");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(98, 9223372036854775806)));
}

TEST_F(RouteEntryTest, AGainThatIsNoNumberIsOne) {
  EXPECT_EQ(gainFrom(""), 1.0F);
  EXPECT_EQ(gainFrom("abc"), 1.0F);
  EXPECT_EQ(gainFrom("1,5"), 1.0F);
  EXPECT_EQ(gainFrom(" 0.5"), 1.0F);
  EXPECT_EQ(gainFrom("0.5 "), 1.0F);
}

TEST_F(RouteEntryTest, AGainKnowsNoRange) {
  EXPECT_EQ(gainFrom("0.5"), 0.5F);
  EXPECT_EQ(gainFrom("-1"), -1.0F);
  EXPECT_EQ(gainFrom("0"), 0.0F);
  EXPECT_EQ(gainFrom("1e6"), 1e6F);
  EXPECT_EQ(gainFrom("0x10"), 16.0F);
  EXPECT_EQ(gainFrom("inf"), std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(gainFrom("nan")));
}

TEST_F(RouteEntryTest, RefusesAnEqualRouteSilently) {
  addRoute("1", "1", "1.0");
  statusTexts();
  press("addConnection");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0)));
  EXPECT_THAT(statusTexts(), IsEmpty());
}

TEST_F(RouteEntryTest, TheSamePairWithAnotherGainIsAnotherRoute) {
  addRoute("1", "1", "1.0");
  addRoute("1", "1", "0.5");
  addRoute("1", "1", "0.5");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0), PatchConnection{0, 0, 0.5F, true}));
}

TEST_F(RouteEntryTest, ARouteWithoutANumberForItsGainIsNeverEqual) {
  addRoute("1", "1", "nan");
  press("addConnection");
  EXPECT_EQ(routes().size(), 2U);
}

TEST_F(RouteEntryTest, LeavesAStoppedEngineAlone) {
  hal.takeCalls();
  addRoute("1", "1", "1.0");
  press("presetThru12");
  clickCell(2, 3);
  press("clearConnections");
  EXPECT_THAT(hal.takeCalls(), IsEmpty());
  EXPECT_EQ(CoreAudioEngine::shared().contextPtr(), nullptr);
}

}  // namespace
}  // namespace tolvane::test
