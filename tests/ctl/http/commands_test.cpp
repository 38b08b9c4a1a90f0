// Requests over a WebSocket, their answers, and who hears what.
#include <gmock/gmock.h>

#include "ctl/http/door_fixture.h"

namespace tolvane::ctl::http {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Row {
  const char* name;
  const char* request;  // without braces and id
  const char* answer;   // how it begins, without "answer" and id
};

const Row kRows[] = {
    {"route", R"("command":"route","input":1,"output":1,"gain":0.25)", R"("ok":true,"serial":1})"},
    {"routeNew", R"("command":"route","input":1,"output":2,"gain":1)", R"("ok":true,"serial":1})"},
    {"routeBeyond", R"("command":"route","input":3,"output":2,"gain":1)",
     R"("ok":false,"error":"there is no input 3; the device has 2"})"},
    {"gain", R"("command":"route/gain","input":1,"output":1,"db":-6)", R"("ok":true,"serial":1})"},
    {"gainSilence", R"("command":"route/gain","input":1,"output":1,"db":null)", R"("ok":true,"serial":1})"},
    {"gainUnknown", R"("command":"route/gain","input":2,"output":1,"db":0)",
     R"("ok":false,"error":"there is no route from input 2 to output 1"})"},
    {"mute", R"("command":"route/mute","input":1,"output":1,"mute":true)", R"("ok":true,"serial":1})"},
    {"label", R"("command":"route/label","input":1,"output":1,"label":"Vox")", R"("ok":true,"serial":1})"},
    {"remove", R"("command":"route/remove","input":1,"output":1)", R"("ok":true,"serial":1})"},
    {"scene", R"("command":"scene","scene":"1 Verse")", R"("ok":true,"serial":1})"},
    {"sceneNumber", R"("command":"scene","scene":2)", R"("ok":true,"serial":1})"},
    {"sceneSave", R"("command":"scene/save","scene":"Bridge")", R"("ok":true,"serial":0})"},
    {"scenes", R"("command":"scenes")", R"("ok":true,"scenes":["1 Verse","2 Chorus"]})"},
    {"undo", R"("command":"undo")", R"("ok":false,"error":"there is nothing to undo"})"},
    {"redo", R"("command":"redo")", R"("ok":false,"error":"there is nothing to redo"})"},
    {"save", R"("command":"save")", R"("ok":true,"serial":0})"},
    {"status", R"("command":"status")",
     R"("ok":true,"status":{"device":{"name":"Box","alive":true,"inputs":2)"},
    {"dump", R"("command":"dump")",
     R"("ok":true,"serial":0,"routes":[{"input":1,"output":1,"gain":0.5,"db":-6.0206,"active":true,"label":""},)"},
    {"subscribe", R"("command":"subscribe","meters":false)", R"("ok":true,"serial":0})"},
    {"unsubscribe", R"("command":"unsubscribe")", R"("ok":true,"serial":0})"},
    {"clipsReset", R"("command":"clips/reset")", R"("ok":true,"serial":0})"},
    {"hello", R"("command":"hello","token":"any")", R"("ok":true,"serial":0})"},
    {"unknown", R"("command":"nothing")", R"("ok":false,"error":"there is no such command"})"},
};

class SocketCommand : public SocketTest, public testing::WithParamInterface<Row> {};

TEST_P(SocketCommand, IsAnswered) {
  const auto client = connect();
  const std::string answer = ask(*client, std::string("{\"id\":7,") + GetParam().request + '}');
  EXPECT_THAT(answer, HasSubstr(std::string("\"id\":7,") + GetParam().answer));
}

INSTANTIATE_TEST_SUITE_P(All, SocketCommand, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

using SocketEvents = SocketTest;

TEST_F(SocketEvents, AllHearEveryChangeAlsoWhoeverAsked) {
  const auto one = connect();
  const auto other = connect();
  for (const auto& client : {one.get(), other.get()})
    ask(*client, R"({"command":"subscribe","id":7,"meters":false})");
  EXPECT_EQ(ask(*one, R"({"command":"route/gain","id":7,"input":1,"output":1,"db":0})"),
            R"({"answer":"route/gain","id":7,"ok":true,"serial":1})");
  const std::string event =
      R"({"event":"changed","serial":1,"cause":"edit","routes":[)"
      R"({"input":1,"output":1,"gain":1.0,"db":0.0,"active":true,"label":""}],"removed":[]})";
  EXPECT_EQ(nextWith(*one, "\"changed\""), event);
  EXPECT_EQ(nextWith(*other, "\"changed\""), event);
}

TEST_F(SocketEvents, TheStatusFollowsAChangeAndScenesTheirSaving) {
  const auto client = connect();
  ask(*client, R"({"command":"subscribe","id":7,"meters":false})");
  nextWith(*client, "\"status\"");
  ask(*client, R"({"command":"route/remove","id":7,"input":1,"output":1})");
  EXPECT_THAT(nextWith(*client, "\"event\":\"status\""), HasSubstr(R"("serial":1,"routes":1,)"));
  client->send(R"({"command":"scene/save","id":7,"scene":"Bridge"})");
  EXPECT_EQ(nextWith(*client, "\"event\":\"scenes\""),
            R"({"event":"scenes","scenes":["1 Verse","2 Chorus","Bridge"]})");
  control_->setLabels({"A", "B"}, {"", ""});
  EXPECT_EQ(nextWith(*client, "\"event\":\"names\""),
            R"({"event":"names","inputs":["A","B"],"outputs":["",""]})");
}

TEST_F(SocketEvents, MetersCome) {
  const auto client = connect();
  ask(*client, R"({"command":"subscribe","id":7,"changes":false})");
  EXPECT_EQ(nextWith(*client, "\"meters\""),
            R"({"event":"meters","inputs":[{"peak":0.5,"rms":0.25,"clip":false},)"
            R"({"peak":0.0,"rms":0.0,"clip":false}],"outputs":[{"peak":1.0,"rms":0.5,"clip":true},)"
            R"({"peak":0.0,"rms":0.0,"clip":false}]})");
}

TEST_F(SocketEvents, AnArrayIsOnePublicationAndOneUndoStep) {
  const auto client = connect();
  client->send(
      R"([{"command":"route/mute","id":1,"input":1,"output":1,"mute":true},{"command":"x","id":2},)"
      R"({"command":"route/mute","id":3,"input":2,"output":2,"mute":false},{"command":"undo","id":4},)"
      R"({"command":"status","id":5}])");
  EXPECT_THAT(nextWith(*client, "\"id\":1"), HasSubstr("\"serial\":1}"));
  EXPECT_THAT(nextWith(*client, "\"id\":2"), HasSubstr("\"ok\":false"));
  EXPECT_THAT(nextWith(*client, "\"id\":3"), HasSubstr("\"serial\":1}"));
  EXPECT_THAT(nextWith(*client, "\"id\":4"), HasSubstr("\"serial\":2}"));
  EXPECT_THAT(nextWith(*client, "\"id\":5"), HasSubstr("\"undo\":0,\"redo\":1"));
  EXPECT_EQ(publications_, 1);
  EXPECT_EQ(control_->routes(), (Routes{{0, 0, 0.5F, true}, {1, 1, 1.0F, false}}));
}

TEST_F(SocketEvents, AGestureOfOneClientIsOneUndoStep) {
  const auto client = connect();
  const auto other = connect();
  for (const char* level : {"-1", "-2", "-3"}) {
    ask(*client, std::string(R"({"command":"route/gain","id":7,"gesture":3,"input":1,"output":1,"db":)") +
                     level + '}');
  }
  ask(*other, R"({"command":"route/gain","id":7,"gesture":3,"input":1,"output":1,"db":-4})");
  EXPECT_THAT(ask(*client, R"({"command":"status","id":7})"), HasSubstr("\"undo\":2,"));
}

TEST_F(SocketEvents, WhenTheRunEndsTheClientsAreToldSo) {
  const auto client = connect();
  door_.reset();
  EXPECT_EQ(client->receive(20'000), std::nullopt);
  EXPECT_EQ(client->closeCode(), 1001);
}

using SocketPage = SocketTest;

TEST_F(SocketPage, IsServedWithAPolicyThatAllowsNothingFromElsewhere) {
  test::TcpSocket browser(port_);
  browser.send("GET / HTTP/1.1\r\nHost: localhost:" + std::to_string(port_) +
               "\r\nConnection: close\r\n\r\n");
  std::string reply;
  while (reply.find("</html>") == std::string::npos) {
    const std::string part = browser.receive(65536, 20'000);
    ASSERT_NE(part, "") << reply;
    reply += part;
  }
  EXPECT_THAT(reply, StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(reply, HasSubstr("content-type: text/html; charset=utf-8\r\n"));
  EXPECT_THAT(reply, HasSubstr("content-security-policy: default-src 'none'; "));
  EXPECT_THAT(reply, HasSubstr("<title>Tolvane"));
}

}  // namespace
}  // namespace tolvane::ctl::http
