// Commands, answers and events as JSON texts, and the schema that describes them.
#include "ctl/control/json.h"

#include <cstdio>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/files.h"

namespace tolvane::ctl::control {
namespace {

using testing::HasSubstr;

constexpr double kSilence = -std::numeric_limits<double>::infinity();

struct Row {
  const char* text;
  Command command;
};

const Row kRequests[] = {
    {R"({"command":"route","input":1,"output":2,"gain":0.1})", SetRoute{{0, 1}, 0.1F}},
    {R"({"command":"route/gain","input":1,"output":2,"db":-6.5})", SetGain{{0, 1}, -6.5}},
    {R"({"command":"route/gain","input":1,"output":2,"db":null})", SetGain{{0, 1}, kSilence}},
    {R"({"command":"route/mute","input":1,"output":2,"mute":true})", SetMute{{0, 1}, true}},
    {R"({"command":"route/label","input":1,"output":2,"label":"Vox"})", SetLabel{{0, 1}, "Vox"}},
    {R"({"command":"route/remove","input":2147483647,"output":2})", RemoveRoute{{2147483646, 1}}},
    {R"({"command":"scene","scene":"Verse"})", RecallScene{"Verse"}},
    {R"({"command":"scene","scene":3})", RecallScene{std::int64_t{3}}},
    {R"({"command":"scene/save","scene":"Verse"})", SaveScene{"Verse"}},
    {R"({"command":"scenes"})", ListScenes{}},
    {R"({"command":"undo"})", Undo{}},
    {R"({"command":"redo"})", Redo{}},
    {R"({"command":"save"})", Save{}},
    {R"({"command":"status"})", GetStatus{}},
    {R"({"command":"dump"})", Dump{}},
    {R"({"command":"subscribe","changes":true,"meters":false})", Subscribe{true, false}},
    {R"({"command":"unsubscribe"})", Unsubscribe{}},
    {R"({"command":"clips/reset"})", ResetClips{}},
    {R"({"command":"hello","token":"0123456789abcdef"})", Hello{"0123456789abcdef"}},
};
static_assert(std::size(kRequests) == std::variant_size_v<Command> + 2);

Request only(std::string_view text) {
  const auto bundle = decodeRequests(text);
  EXPECT_TRUE(bundle) << text;
  EXPECT_EQ(bundle.value().size(), 1U);
  EXPECT_TRUE(bundle.value()[0]) << bundle.value()[0].error().text;
  return bundle.value()[0].value();
}

TEST(Json, EveryCommandIsReadAndWritten) {
  for (const Row& row : kRequests) {
    EXPECT_EQ(only(row.text), (Request{row.command, {}, 0})) << row.text;
    EXPECT_EQ(encodeRequest({row.command, {}, 0}), row.text);
  }
}

TEST(Json, IdsAndGesturesAreKept) {
  for (const RequestId& id : {RequestId(std::int64_t{-7}), RequestId("a \"b\"")}) {
    const Request request{Undo{}, id, 9};
    EXPECT_EQ(only(encodeRequest(request)), request);
  }
  EXPECT_EQ(encodeAnswer(Undo{}, std::int64_t{7}, Done{3}),
            R"({"answer":"undo","id":7,"ok":true,"serial":3})");
}

TEST(Json, ALevelThatIsTooHighIsNotWrittenAsSilence) {
  for (const double level : {1e39, std::numeric_limits<double>::infinity()}) {
    const Command command = only(encodeRequest({SetGain{{0, 1}, level}, {}, 0})).command;
    EXPECT_GT(std::get<SetGain>(command).decibels, 770.0) << level;
  }
}

TEST(Json, AFilesLargestChannelIsShownAsItIs) {
  constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(encodeEvent(RoutesChanged{1, Cause::file, {}, {{kLast, -kLast - 1}}}),
            R"({"event":"changed","serial":1,"cause":"file","routes":[],)"
            R"("removed":[{"input":9223372036854775808,"output":-9223372036854775807}]})");
}

TEST(Json, NumbersMayBeWrittenInAnyForm) {
  EXPECT_EQ(only(R"({"gain":1,"output":2.0,"input":1e0,"command":"route"})").command,
            Command(SetRoute{{0, 1}, 1.0F}));
  EXPECT_EQ(only(R"({"command":"subscribe"})").command, Command(Subscribe{true, true}));
}

struct Bad {
  const char* text;
  const char* error;
};
const Bad kBadRequests[] = {
    {R"({})", "\"command\" is missing"},
    {R"({"command":7})", "\"command\" must be a string"},
    {R"({"command":"nothing"})", "there is no such command"},
    {R"({"command":"undo","x":1})", "there is no member \"x\""},
    {R"({"command":"undo","id":1.5})", "\"id\" must be"},
    {R"({"command":"undo","id":null})", "\"id\" must be"},
    {R"({"command":"undo","gesture":0})", "\"gesture\" must be"},
    {R"({"command":"route","output":1,"gain":1})", "\"input\" is missing"},
    {R"({"command":"route","input":0,"output":1,"gain":1})", "\"input\" must be a whole number from 1"},
    {R"({"command":"route","input":2147483648,"output":1,"gain":1})", "\"input\" must be"},
    {R"({"command":"route","input":18446744073709551615,"output":1,"gain":1})", "\"input\" must be"},
    {R"({"command":"route","input":1.5,"output":1,"gain":1})", "\"input\" must be"},
    {R"({"command":"route","input":"1","output":1,"gain":1})", "\"input\" must be"},
    {R"({"command":"route","input":true,"output":1,"gain":1})", "\"input\" must be"},
    {R"({"command":"route","input":1,"output":1,"gain":1e39})", "\"gain\" is too large"},
    {R"({"command":"route","input":1,"output":1,"gain":null})", "\"gain\" must be a number"},
    {R"({"command":"route/gain","input":1,"output":1,"db":"-6"})", "\"db\" must be a number"},
    {R"({"command":"route/mute","input":1,"output":1,"mute":1})", "\"mute\" must be true or false"},
    {R"({"command":"route/label","input":1,"output":1,"label":1})", "\"label\" must be a string"},
    {R"({"command":"scene","scene":0})", "\"scene\" must be"},
    {R"({"command":"scene/save","scene":1})", "\"scene\" must be a string"},
    {R"({"command":"subscribe","meters":1})", "\"meters\" must be true or false"},
    {R"({"command":"hello"})", "\"token\" is missing"},
    {R"({"command":"hello","token":7})", "\"token\" must be a string"},
};

TEST(Json, AWrongRequestIsSaidToBeSo) {
  for (const Bad& bad : kBadRequests) {
    const auto bundle = decodeRequests(bad.text);
    ASSERT_TRUE(bundle) << bad.text;
    ASSERT_FALSE(bundle.value()[0]) << bad.text;
    EXPECT_THAT(bundle.value()[0].error().text, HasSubstr(bad.error)) << bad.text;
  }
}

TEST(Json, TextsThatAreNoRequestsAreRefused) {
  const std::string deep = std::string(40, '[') + std::string(40, ']');
  for (const std::string& text :
       {std::string(), std::string("{"), std::string("7"), std::string("[]"), std::string("\"x\""), deep,
        std::string("{\"command\":\"undo\"}\0", 19), std::string("{\"command\":\"\xFF\"}"),
        std::string("{\"command\":1e999}"), '"' + std::string(kLargestMessageBytes, 'x') + '"'})
    EXPECT_FALSE(decodeRequests(text)) << text.substr(0, 40);
}

TEST(Json, AnArrayIsABundleWhoseWrongOnesStandForThemselves) {
  const auto bundle =
      decodeRequests(R"([{"command":"undo"},{"command":"nothing","id":5},3,{"command":"redo"}])");
  ASSERT_TRUE(bundle);
  ASSERT_EQ(bundle.value().size(), 4U);
  EXPECT_TRUE(bundle.value()[0]);
  EXPECT_EQ(encodeAnswer(bundle.value()[1].error()),
            R"({"answer":"","id":5,"ok":false,"error":"there is no such command"})");
  EXPECT_FALSE(bundle.value()[2]);
  EXPECT_EQ(bundle.value()[3].value().command, Command(Redo{}));
  std::string many = "[0";
  for (int i = 1; i < 257; ++i) many += ",0";
  EXPECT_FALSE(decodeRequests(many + ']'));
}

const Status kStatus{.device = {.name = "Box\xFF",
                                .isAlive = true,
                                .inputs = 2,
                                .outputs = 2,
                                .sampleRateHz = 44100.5,
                                .bufferFrames = 64,
                                .cycles = 1ULL << 40U,
                                .deviceOverloads = 1,
                                .callbackOverloads = 2,
                                .load = 0.25,
                                .peakLoad = 1.5},
                     .serial = 9,
                     .routes = 3,
                     .heard = 2,
                     .undoSteps = 1,
                     .redoSteps = 0,
                     .isSaved = false,
                     .scene = "Verse",
                     .patchPath = "/tmp/p.json",
                     .rampMs = 20};
constexpr const char* kStatusText =
    R"({"device":{"name":"Box)"
    "\xEF\xBF\xBD"
    R"(","alive":true,"inputs":2,"outputs":2,"sampleRate":44100.5,"bufferFrames":64,"cycles":1099511627776,)"
    R"("overloads":{"device":1,"callback":2},"load":0.25,"peakLoad":1.5},"serial":9,"routes":3,"heard":2,)"
    R"("undo":1,"redo":0,"saved":false,"scene":"Verse","patch":"/tmp/p.json","ramp":20})";

std::vector<std::pair<std::string, std::string>> answers() {
  return {
      {encodeAnswer(SetGain{}, {}, Done{12}), R"({"answer":"route/gain","ok":true,"serial":12})"},
      {encodeAnswer(Save{}, "x", Refusal{"no \"disk\""}),
       R"({"answer":"save","id":"x","ok":false,"error":"no \"disk\""})"},
      {encodeAnswer(ListScenes{}, {}, SceneList{{"1 Intro", "Verse"}}),
       R"({"answer":"scenes","ok":true,"scenes":["1 Intro","Verse"]})"},
      {encodeAnswer(GetStatus{}, {}, kStatus),
       std::string(R"({"answer":"status","ok":true,"status":)") + kStatusText + '}'},
      {encodeAnswer(Dump{}, {},
                    RouteDump{4, {{{0, 1}, 0.1F, true, "Vox"}, {{-3, 1}, 0.0F, false, ""}}, {"A", ""}, {}}),
       R"({"answer":"dump","ok":true,"serial":4,"routes":[)"
       R"({"input":1,"output":2,"gain":0.1,"db":-20.0,"active":true,"label":"Vox"},)"
       R"({"input":-2,"output":2,"gain":0.0,"db":null,"active":false,"label":""}],)"
       R"("inputs":["A",""],"outputs":[]})"},
  };
}

std::vector<std::pair<std::string, std::string>> events() {
  return {
      {encodeEvent(RoutesChanged{5, Cause::scene, {{{0, 1}, -1.0F, true, ""}}, {{2, 3}}}),
       R"({"event":"changed","serial":5,"cause":"scene","routes":[)"
       R"({"input":1,"output":2,"gain":-1.0,"db":0.0,"active":true,"label":""}],)"
       R"("removed":[{"input":3,"output":4}]})"},
      {encodeEvent(StatusChanged{kStatus}),
       std::string(R"({"event":"status","status":)") + kStatusText + '}'},
      {encodeEvent(Meters{{{0.5F, 0.25F, false}}, {{1.5F, 1.0F, true}}}),
       R"({"event":"meters","inputs":[{"peak":0.5,"rms":0.25,"clip":false}],)"
       R"("outputs":[{"peak":1.5,"rms":1.0,"clip":true}]})"},
      {encodeEvent(ScenesChanged{{"1 Intro", "Verse"}}),
       R"({"event":"scenes","scenes":["1 Intro","Verse"]})"},
      {encodeEvent(NamesChanged{{"Vox", ""}, {}}), R"({"event":"names","inputs":["Vox",""],"outputs":[]})"},
      {encodeWelcome("tolvanectl 1.2", true),
       R"({"event":"welcome","program":"tolvanectl 1.2","token":true})"},
      {encodeEvent(Dropped{"too slow"}), R"({"event":"dropped","why":"too slow"})"},
  };
}

TEST(Json, EveryAnswerAndEventIsWritten) {
  for (const auto& [text, expected] : answers()) EXPECT_EQ(text, expected);
  for (const auto& [text, expected] : events()) EXPECT_EQ(text, expected);
}

/// What the validator says of each text: a "yes" or "no" a line.
std::string valid(const std::string& kind, const std::vector<std::string>& texts) {
  const test::TemporaryFolder folder;
  std::string lines;
  for (const std::string& text : texts) lines += text + '\n';
  test::writeText(folder / "texts", lines);
  const std::string command =
      std::string(TOLVANE_VALIDATE) + ' ' + kind + ' ' + (folder / "texts") + " > " + (folder / "out");
  EXPECT_EQ(std::system(command.c_str()), 0);
  return test::readBytes(folder / "out");
}

std::string repeated(const char* line, std::size_t count) {
  std::string lines;
  for (std::size_t i = 0; i < count; ++i) lines += line;
  return lines;
}

TEST(JsonSchema, DescribesEveryRequest) {
  std::vector<std::string> texts;
  for (const Row& row : kRequests) texts.push_back(encodeRequest({row.command, std::int64_t{1}, 2}));
  EXPECT_EQ(valid("request", texts), repeated("yes\n", texts.size()));
}

TEST(JsonSchema, RefusesEveryWrongRequestButOneThatIsTooLarge) {
  std::vector<std::string> texts;
  for (const Bad& bad : kBadRequests) {
    if (std::string(bad.error) != "\"gain\" is too large") texts.emplace_back(bad.text);
  }
  EXPECT_EQ(valid("request", texts), repeated("no\n", texts.size()));
}

TEST(JsonSchema, DescribesEveryAnswerAndEvent) {
  std::vector<std::string> texts;
  for (const auto& [text, expected] : answers()) texts.push_back(text);
  texts.push_back(encodeAnswer(RequestError{"the message is not JSON", {}, {}}));
  EXPECT_EQ(valid("answer", texts), repeated("yes\n", texts.size()));
  EXPECT_EQ(valid("event", texts), repeated("no\n", texts.size()));
  texts.clear();
  for (const auto& [text, expected] : events()) texts.push_back(text);
  EXPECT_EQ(valid("event", texts), repeated("yes\n", texts.size()));
  EXPECT_EQ(valid("answer", texts), repeated("no\n", texts.size()));
}

}  // namespace
}  // namespace tolvane::ctl::control
