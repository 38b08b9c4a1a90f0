// The shipped program seen through a screen reader: what it reports and what can be done.
#include <QCoreApplication>
#include <algorithm>

#include <gmock/gmock.h>

#include "app/accessibility_bus.h"
#include "app/x_session.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsSupersetOf;

class ScreenReaderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.isUp()) << "Xvfb does not start";
    ASSERT_TRUE(bus_.isUp()) << "there is no accessibility bus";
    session_.setVariable("DBUS_SESSION_BUS_ADDRESS", bus_.sessionAddress());
    ASSERT_TRUE(session_.start(TOLVANE_WINDOW_PROGRAM, {}));
    const auto program = bus_.program("tolvane");
    ASSERT_TRUE(program.has_value());
    ASSERT_NE(session_.windowTitled("Tolvane"), "");
    tree_ = bus_.tree(*program);
    // Announcements arrive in order. After this one, those of the start are complete.
    ASSERT_TRUE(bus_.act(the("button", "Clear"), "Press"));
    ASSERT_TRUE(waitFor([this] {
      const auto texts = bus_.announcements();
      return !texts.empty() && texts.back().starts_with("0 connection(s)");
    }));
  }

  /// The object of this role whose name starts with `begin`.
  [[nodiscard]] Accessible the(const std::string& role, const std::string& begin) const {
    const auto found = std::find_if(tree_.begin(), tree_.end(), [&](const Accessible& object) {
      return bus_.role(object) == role && bus_.name(object).starts_with(begin);
    });
    return found == tree_.end() ? Accessible{} : *found;
  }
  /// Waits for this many announcements. Returns all that arrive by then.
  std::vector<std::string> announced(std::size_t count) {
    std::vector<std::string> texts;
    waitFor([&] {
      for (const std::string& text : bus_.announcements()) texts.push_back(text);
      return texts.size() >= count;
    });
    return texts;
  }

  static QCoreApplication& application() {
    static int argc = 1;
    static char name[] = "app_screen_reader_test";
    static char* argv[] = {name, nullptr};
    static QCoreApplication one(argc, argv);
    return one;
  }

  QCoreApplication& application_ = application();
  XSession session_;
  AccessibilityBus bus_{session_.folder().filePath("run")};
  std::vector<Accessible> tree_;
};

TEST_F(ScreenReaderTest, FindsEveryControlByRoleAndName) {
  std::vector<std::string> controls;
  for (const Accessible& object : tree_) controls.push_back(bus_.role(object) + ": " + bus_.name(object));
  EXPECT_THAT(controls, IsSupersetOf({"frame: Tolvane", "notification: Engine stopped", "button: Start",
                                      "button: Refresh devices", "table: Patch matrix", "list: Outputs",
                                      "list: Inputs", "table: Active connections", "text: Input channel",
                                      "text: Output channel", "text: Gain, linear", "button: Add connection",
                                      "button: Remove selected connection", "button: Clear all connections",
                                      "button: Preset: inputs 1 and 2 to the last two outputs",
                                      "button: Preset: input 1 to output 1, input 2 to output 2",
                                      "button: Save patch", "button: Load patch"}));
}

TEST_F(ScreenReaderTest, TogglesARouteByTheActionOfItsCellAndHearsOfIt) {
  const Accessible cell = bus_.cell(the("table", "Patch matrix"), 2, 6);
  EXPECT_EQ(bus_.name(cell), "In 3 → Out 7");
  EXPECT_FALSE(bus_.isChecked(cell));
  ASSERT_TRUE(bus_.act(cell, "Toggle"));
  EXPECT_THAT(announced(1), ElementsAre("1 connection(s) configured — press Start to route."));
  EXPECT_TRUE(bus_.isChecked(cell));
  ASSERT_TRUE(bus_.act(cell, "Toggle"));
  EXPECT_THAT(announced(1), ElementsAre("0 connection(s) configured — press Start to route."));
  EXPECT_FALSE(bus_.isChecked(cell));
}

TEST_F(ScreenReaderTest, IsToldTheEnginesStateAndEachStatusText) {
  const Accessible button = the("button", "Start");
  ASSERT_TRUE(bus_.act(button, "Press"));
  EXPECT_THAT(announced(2),
              ::testing::UnorderedElementsAre("Engine running",
                                              ::testing::MatchesRegex("● Running on .*0 active route.s.")));
  EXPECT_EQ(bus_.name(button), "Stop");
  ASSERT_TRUE(bus_.act(button, "Press"));
  EXPECT_THAT(announced(2), ::testing::UnorderedElementsAre("Engine stopped", "Stopped."));
}

TEST_F(ScreenReaderTest, HearsTheLastOfAnActionsTextsAndTheSameTextAgain) {
  const Accessible preset = the("button", "Preset: input 1");
  for (int time = 0; time < 2; ++time) {
    ASSERT_TRUE(bus_.act(preset, "Press"));
    EXPECT_THAT(announced(1), ElementsAre("Preset: In 1 → Out 1,  In 2 → Out 2"));
  }
}

}  // namespace
}  // namespace tolvane::test
