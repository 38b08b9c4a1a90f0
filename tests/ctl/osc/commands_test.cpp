// The table of addresses, arguments and answers.
#include <limits>

#include <gmock/gmock.h>

#include "ctl/osc/door_fixture.h"

namespace tolvane::ctl::osc {
namespace {

using testing::ElementsAre;

constexpr float kSilence = -std::numeric_limits<float>::infinity();

struct Row {
  const char* name;
  Message sent;
  std::vector<Message> answer;
};

Message error(const std::string& address, const std::string& text) {
  return {address + "/error", {text}};
}

const std::vector<Argument> kStatus = {
    std::string("Box"), 1, 2, 2, 48000.0F, 64, 1234, 3, 1, 0.125F, 0.5F, 0, 2, 1, 0, 0, 1, std::string(),
};

const Row kRows[] = {
    {"route", {"/tolvane/route", {1, 1, 0.25F}}, {{"/tolvane/route/reply", {1}}}},
    {"routeNew", {"/tolvane/route", {1, 2, 1}}, {{"/tolvane/route/reply", {1}}}},
    {"routeAsDoubles", {"/tolvane/route", {1.0, 2.0F, 0.5}}, {{"/tolvane/route/reply", {1}}}},
    {"routeAsLongs",
     {"/tolvane/route", {std::int64_t{1}, std::int64_t{2}, std::int64_t{1}}},
     {{"/tolvane/route/reply", {1}}}},
    {"routeSame", {"/tolvane/route", {1, 1, 0.5F}}, {{"/tolvane/route/reply", {0}}}},
    {"routeBeyondDevice",
     {"/tolvane/route", {3, 1, 0.5F}},
     {error("/tolvane/route", "there is no input 3; the device has 2")}},
    {"routeZero",
     {"/tolvane/route", {0, 1, 0.5F}},
     {error("/tolvane/route", "the input must be a whole number from 1 to 2147483647")}},
    {"routeFraction",
     {"/tolvane/route", {1.5F, 1, 0.5F}},
     {error("/tolvane/route", "the input must be a whole number from 1 to 2147483647")}},
    {"routeText",
     {"/tolvane/route", {std::string("1"), 1, 0.5F}},
     {error("/tolvane/route", "the input must be a number")}},
    {"routeTooFew", {"/tolvane/route", {1, 1}}, {error("/tolvane/route", "the gain is missing")}},
    {"routeTooMany",
     {"/tolvane/route", {1, 1, 1, 1}},
     {error("/tolvane/route", "there are too many arguments")}},
    {"routeNaN",
     {"/tolvane/route", {1, 1, std::numeric_limits<float>::quiet_NaN()}},
     {error("/tolvane/route", "the gain must be a finite number")}},
    {"routeTooLoud",
     {"/tolvane/route", {1, 1, 1e39}},
     {error("/tolvane/route", "the gain must be a finite number")}},
    {"gain", {"/tolvane/route/gain", {1, 1, -12}}, {{"/tolvane/route/gain/reply", {1}}}},
    {"gainSilence", {"/tolvane/route/gain", {1, 1, kSilence}}, {{"/tolvane/route/gain/reply", {1}}}},
    {"gainNowhere",
     {"/tolvane/route/gain", {2, 1, 0}},
     {error("/tolvane/route/gain", "there is no route from input 2 to output 1")}},
    {"gainNaN",
     {"/tolvane/route/gain", {1, 1, std::numeric_limits<float>::quiet_NaN()}},
     {error("/tolvane/route/gain", "the level must be a number of decibels, up to 770")}},
    {"mute", {"/tolvane/route/mute", {1, 1, 1}}, {{"/tolvane/route/mute/reply", {1}}}},
    {"muteTrue", {"/tolvane/route/mute", {1, 1, true}}, {{"/tolvane/route/mute/reply", {1}}}},
    {"muteFloat", {"/tolvane/route/mute", {2, 2, 0.0F}}, {{"/tolvane/route/mute/reply", {1}}}},
    {"muteTwo", {"/tolvane/route/mute", {1, 1, 2}}, {error("/tolvane/route/mute", "mute must be 0 or 1")}},
    {"label", {"/tolvane/route/label", {1, 1, std::string("Vox")}}, {{"/tolvane/route/label/reply", {1}}}},
    {"labelNumber",
     {"/tolvane/route/label", {1, 1, 5}},
     {error("/tolvane/route/label", "the label must be a string")}},
    {"remove", {"/tolvane/route/remove", {1, 1}}, {{"/tolvane/route/remove/reply", {1}}}},
    {"removeNowhere",
     {"/tolvane/route/remove", {1, 2}},
     {error("/tolvane/route/remove", "there is no route from input 1 to output 2")}},
    {"sceneByName", {"/tolvane/scene", {std::string("1 Verse")}}, {{"/tolvane/scene/reply", {1}}}},
    {"sceneByNumber", {"/tolvane/scene", {2}}, {{"/tolvane/scene/reply", {1}}}},
    {"sceneByFloat", {"/tolvane/scene", {1.0F}}, {{"/tolvane/scene/reply", {1}}}},
    {"sceneUnknown",
     {"/tolvane/scene", {std::string("Bridge")}},
     {error("/tolvane/scene", "there is no scene \"Bridge\"")}},
    {"sceneBeyond", {"/tolvane/scene", {3}}, {error("/tolvane/scene", "there is no scene 3; there are 2")}},
    {"sceneOutside",
     {"/tolvane/scene", {std::string("../patch")}},
     {error("/tolvane/scene", "the name of a scene cannot begin with a full stop or hold a slash")}},
    {"sceneMissing",
     {"/tolvane/scene", {}},
     {error("/tolvane/scene", "the scene, if it is not a name, is missing")}},
    {"sceneSave", {"/tolvane/scene/save", {std::string("Bridge")}}, {{"/tolvane/scene/save/reply", {0}}}},
    {"scenes",
     {"/tolvane/scenes", {}},
     {{"/tolvane/scenes/reply", {2}},
      {"/tolvane/scenes/reply/scene", {1, std::string("1 Verse")}},
      {"/tolvane/scenes/reply/scene", {2, std::string("2 Chorus")}}}},
    {"undoNothing", {"/tolvane/undo", {}}, {error("/tolvane/undo", "there is nothing to undo")}},
    {"undoArgument", {"/tolvane/undo", {1}}, {error("/tolvane/undo", "there are too many arguments")}},
    {"redoNothing", {"/tolvane/redo", {}}, {error("/tolvane/redo", "there is nothing to redo")}},
    {"save", {"/tolvane/save", {}}, {{"/tolvane/save/reply", {0}}}},
    {"dump",
     {"/tolvane/dump", {}},
     {{"/tolvane/dump/reply", {0, 2, 2, 2}},
      {"/tolvane/dump/reply/route", {1, 1, 1, 0.5F, -6.0206F, 1, std::string()}},
      {"/tolvane/dump/reply/route", {2, 2, 2, 1.0F, 0.0F, 0, std::string()}},
      {"/tolvane/dump/reply/input", {1, std::string("Vox")}},
      {"/tolvane/dump/reply/output", {2, std::string("Wedge")}}}},
    {"subscribeWrong",
     {"/tolvane/subscribe", {std::string("all")}},
     {error("/tolvane/subscribe", "there are \"changes\" and \"meters\" to subscribe")}},
    {"subscribePort",
     {"/tolvane/subscribe", {65536}},
     {error("/tolvane/subscribe", "the port must be 65535 at most")}},
    {"unsubscribe", {"/tolvane/unsubscribe", {}}, {{"/tolvane/unsubscribe/reply", {0}}}},
    {"clipsReset", {"/tolvane/clips/reset", {}}, {{"/tolvane/clips/reset/reply", {0}}}},
    {"hello", {"/tolvane/hello", {std::string("anything")}}, {{"/tolvane/hello/reply", {0}}}},
    {"unknown", {"/tolvane/nothing", {}}, {error("/tolvane/nothing", "there is no such address")}},
    {"elsewhere", {"/mixer/gain", {1}}, {error("/mixer/gain", "there is no such address")}},
};

class OscTable : public DoorTest, public testing::WithParamInterface<Row> {};

TEST_P(OscTable, IsAnsweredSo) {
  EXPECT_EQ(ask(GetParam().sent), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(Row, OscTable, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

using OscCommands = DoorTest;

TEST_F(OscCommands, TheStatusHasAFixedOrder) {
  std::vector<Argument> status = kStatus;
  status.insert(status.end(), {path_, 0});
  EXPECT_THAT(ask({"/tolvane/status", {}}), ElementsAre(Message{"/tolvane/status/reply", status}));
}

TEST_F(OscCommands, UndoAndRedoAreAnsweredWithTheNewNumber) {
  ask({"/tolvane/route/gain", {1, 1, -12.0F}});
  EXPECT_THAT(ask({"/tolvane/undo", {}}), ElementsAre(Message{"/tolvane/undo/reply", {2}}));
  EXPECT_EQ(control_->routes()[0].gain, 0.5F);
  EXPECT_THAT(ask({"/tolvane/redo", {}}), ElementsAre(Message{"/tolvane/redo/reply", {3}}));
  EXPECT_FLOAT_EQ(control_->routes()[0].gain, 0.251188643F);
}

TEST_F(OscCommands, ABundleIsOnePublicationAndOneUndoStep) {
  const std::string bundle = encodePackets({{"/tolvane/route", {1, 2, 1.0F}},
                                            {"/tolvane/route/mute", {1, 1, 1}},
                                            {"/tolvane/route/gain", {2, 1, 0}},
                                            {"/tolvane/route/remove", {2, 2}}})
                                 .front();
  ASSERT_TRUE(bundle.starts_with("#bundle"));
  EXPECT_THAT(exchange(bundle),
              ElementsAre(Message{"/tolvane/route/reply", {1}}, Message{"/tolvane/route/mute/reply", {1}},
                          error("/tolvane/route/gain", "there is no route from input 2 to output 1"),
                          Message{"/tolvane/route/remove/reply", {1}}));
  EXPECT_EQ(publications_, 1);
  EXPECT_EQ(control_->routes(), (Routes{{0, 0, 0.5F, false}, {0, 1, 1.0F, true}}));
  ask({"/tolvane/undo", {}});
  EXPECT_EQ(control_->routes(), (Routes{{0, 0, 0.5F, true}, {1, 1, 1.0F, false}}));
}

TEST_F(OscCommands, NestedBundlesAreOneAsWell) {
  const std::string inner = encodePackets({{"/tolvane/undo", {}}, {"/tolvane/route", {1, 2, 1.0F}}}).front();
  std::string outer = std::string("#bundle\0\0\0\0\0\0\0\0\1", 16);
  outer += std::string("\0\0\0", 3) + static_cast<char>(inner.size()) + inner;
  EXPECT_THAT(exchange(outer), ElementsAre(error("/tolvane/undo", "there is nothing to undo"),
                                           Message{"/tolvane/route/reply", {1}}));
}

}  // namespace
}  // namespace tolvane::ctl::osc
