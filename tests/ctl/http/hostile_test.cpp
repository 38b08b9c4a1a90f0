// What nobody should send: each gets an error or a close, changes nothing, and keeps nobody else out.
#include <gmock/gmock.h>

#include "ctl/doors/token.h"
#include "ctl/http/door_fixture.h"
#include "support/eventually.h"

namespace tolvane::ctl::http {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string kSecret = "0123456789abcdef";

class SocketHostile : public SocketTest {
 protected:
  ~SocketHostile() override {
    EXPECT_EQ(control_->serial(), 0U);
    EXPECT_EQ(control_->routes(), (Routes{{0, 0, 0.5F, true}, {1, 1, 1.0F, false}}));
  }
  /// The first line of the server's answer to these bytes; "closed" if it only closes.
  std::string statusOf(const std::string& request) {
    test::TcpSocket socket(port_);
    socket.send(request);
    const std::string reply = socket.receiveAll(20'000);
    return reply.empty() ? "closed" : reply.substr(0, reply.find('\r'));
  }
  [[nodiscard]] std::string here() const { return "127.0.0.1:" + std::to_string(port_); }
  /// True if a client is still served.
  void expectServed() {
    EXPECT_THAT(ask(*connect(), R"({"command":"status","id":7})"), HasSubstr("\"ok\":true"));
  }
};

TEST_F(SocketHostile, APageFromElsewhereMayNotConnect) {
  for (const char* origin : {"http://evil.example", "null", "http://127.0.0.1:1", "https://localhost"}) {
    EXPECT_THAT(
        statusOf(test::handshake(here(), std::string("Origin: ") + origin + "\r\nConnection: close\r\n")),
        HasSubstr(" 403 "))
        << origin;
  }
  const std::string longOrigin = "Origin: http://" + here() + std::string(400, '0') + "\r\n";
  EXPECT_THAT(statusOf(test::handshake(here(), longOrigin)), HasSubstr(" 403 "));
  test::WebSocket own(port_, "Origin: http://" + here() + "\r\n");
  EXPECT_THAT(next(own), HasSubstr("\"welcome\""));
}

TEST_F(SocketHostile, ANameThatWasReboundToUsIsRefused) {
  EXPECT_THAT(statusOf(test::handshake("evil.example:" + std::to_string(port_))), HasSubstr(" 403 "));
  EXPECT_THAT(statusOf("GET / HTTP/1.1\r\nHost: evil.example\r\nConnection: close\r\n\r\n"),
              HasSubstr(" 403 "));
  EXPECT_THAT(statusOf("GET / HTTP/1.0\r\n\r\n"), HasSubstr(" 403 "));
}

TEST_F(SocketHostile, OtherPathsAndMethodsGetNothing) {
  const std::string end = " HTTP/1.1\r\nHost: " + here() + "\r\nConnection: close\r\n";
  EXPECT_THAT(statusOf("GET /ws" + end + "\r\n"), HasSubstr(" 404 "));
  EXPECT_THAT(statusOf("GET /../etc/passwd" + end + "\r\n"), testing::Not(HasSubstr("200")));
  EXPECT_THAT(statusOf("POST /" + end + "Content-Length: 0\r\n\r\n"), HasSubstr(" 405 "));
  EXPECT_THAT(statusOf(test::handshake(here(), "", "/")), HasSubstr(" 404 "));
  EXPECT_THAT(statusOf(test::handshake(here(), "Sec-WebSocket-Protocol: other\r\n")),
              testing::Not(HasSubstr("101")));
  expectServed();
}

TEST_F(SocketHostile, WhatIsNoHttpIsClosed) {
  for (const std::string& bytes :
       {std::string(100'000, 'x'), std::string("\x16\x03\x01\x02\x00\x01\x00", 7) + "\r\n\r\n",
        "GET / HTTP/1.1\r\nHost: " + std::string(100'000, 'x') + "\r\n\r\n"})
    EXPECT_THAT(statusOf(bytes), testing::Not(HasSubstr("200"))) << bytes.substr(0, 20);
  expectServed();
}

TEST_F(SocketHostile, WithoutTheTokenNothingIsDone) {
  open(Token(kSecret));
  const auto client = connect();
  EXPECT_EQ(ask(*client, R"({"command":"route/remove","id":7,"input":1,"output":1})"),
            R"({"answer":"route/remove","id":7,"ok":false,"error":"say hello with the token first"})");
  EXPECT_EQ(ask(*client, R"({"command":"hello","id":7,"token":"0123456789abcdeF"})"),
            R"({"answer":"hello","id":7,"ok":false,"error":"the token is wrong"})");
  EXPECT_THAT(ask(*client, R"({"command":"dump","id":7})"), HasSubstr("\"ok\":false"));
  EXPECT_THAT(ask(*client, "{\"command\":\"hello\",\"id\":7,\"token\":\"" + kSecret + "\"}"),
              HasSubstr("\"ok\":true"));
  EXPECT_THAT(ask(*client, R"({"command":"dump","id":7})"), HasSubstr("\"ok\":true"));
}

TEST_F(SocketHostile, TheTokenCannotBeGuessedFast) {
  open(Token(kSecret));
  for (int guess = 0; guess < 5; ++guess)
    EXPECT_THAT(ask(*connect(), R"({"command":"hello","id":7,"token":"x"})"),
                HasSubstr("the token is wrong"));
  // The rate is the machine's: a new connection does not help. A second may have passed meanwhile.
  std::string last;
  for (int guess = 0; guess < 20 && last.find("too many attempts") == std::string::npos; ++guess)
    last = ask(*connect(), R"({"command":"hello","id":7,"token":"x"})");
  EXPECT_THAT(last, HasSubstr("too many attempts"));
}

TEST_F(SocketHostile, TheRightTokenIsNoGuess) {
  open(Token(kSecret));
  for (int client = 0; client < 20; ++client)
    EXPECT_THAT(ask(*connect(), "{\"command\":\"hello\",\"id\":7,\"token\":\"" + kSecret + "\"}"),
                HasSubstr("\"ok\":true"));
}

TEST_F(SocketHostile, StrangersCannotKeepOutWhoKnowsTheToken) {
  open(Token(kSecret));
  std::vector<std::unique_ptr<test::WebSocket>> strangers;
  for (int i = 0; i < 40; ++i) strangers.push_back(std::make_unique<test::WebSocket>(port_));
  for (const auto& stranger : strangers) EXPECT_THAT(stranger->answer(20'000), StartsWith("HTTP/1.1 101"));
  const auto client = connect();
  EXPECT_THAT(ask(*client, "{\"command\":\"hello\",\"id\":7,\"token\":\"" + kSecret + "\"}"),
              HasSubstr("\"ok\":true"));
}

TEST_F(SocketHostile, StrangersWhoComeTogetherAreSixteenAtMost) {
  open(Token(kSecret));
  std::vector<std::unique_ptr<test::WebSocket>> strangers;
  for (int i = 0; i < 16; ++i) strangers.push_back(connect());
  std::vector<std::unique_ptr<test::TcpSocket>> others;
  for (int i = 0; i < 30; ++i) others.push_back(std::make_unique<test::TcpSocket>(port_));
  for (const auto& other : others) other->send(test::handshake(here()));
  int stay = 0;
  for (const auto& other : others) EXPECT_NE(other->receive(1, 20'000), "") << "each is answered";
  connect();  // the server has had its turn
  connect();
  for (const auto& stranger : strangers) {
    static_cast<void>(stranger->receive());
    if (!stranger->socket().hasEnded()) ++stay;
  }
  for (const auto& other : others) {
    while (!other->receive(65536, 0).empty()) {
    }
    if (!other->hasEnded()) ++stay;
  }
  EXPECT_LE(stay, 16);
}

TEST_F(SocketHostile, ABundleBeyondTheRateIsRefusedWhole) {
  // A burst of 4,000 is allowed, so a slow machine may take every bundle.
  constexpr int kBundles = 60;
  constexpr int kRequests = 256;
  std::string bundle = "[";
  for (int request = 0; request < kRequests; ++request) bundle += R"({"command":"undo"},)";
  bundle.back() = ']';
  const auto client = connect();
  for (int each = 0; each < kBundles; ++each) client->send(bundle);
  for (int each = 0; each < kBundles; ++each) {
    const std::string first = next(*client);
    EXPECT_THAT(first, testing::AnyOf(HasSubstr("nothing to undo"), HasSubstr("too many messages")));
    for (int request = 1; request < kRequests; ++request) ASSERT_EQ(next(*client), first);
  }
}

TEST_F(SocketHostile, AMessageThatIsTooLargeClosesTheConnection) {
  const auto client = connect();
  client->send('"' + std::string(70'000, 'x') + '"');
  EXPECT_EQ(next(*client), "");
  EXPECT_EQ(client->closeCode(), 1009);
  const auto inParts = connect();
  for (int part = 0; part < 20; ++part)
    inParts->socket().send(test::frame(std::string(5000, ' '), part == 0 ? 1 : 0, false));
  EXPECT_EQ(next(*inParts), "");
  EXPECT_EQ(inParts->closeCode(), 1009);
  expectServed();
}

TEST_F(SocketHostile, WhatIsNoRequestIsAnsweredAndChangesNothing) {
  const auto client = connect();
  for (const char* text :
       {"", "{", "[]", "7", "null", "{\"command\":\"route\"}", "[{},7,[]]", "\xEF\xBB\xBF{}"}) {
    client->send(text);
    EXPECT_THAT(next(*client), HasSubstr("\"ok\":false")) << text;
    while (client->receive(50)) {
    }
  }
}

TEST_F(SocketHostile, FramesThatAreNoTextsCloseTheConnection) {
  const std::pair<std::string, int> rows[] = {
      {test::frame("{}", 2), 1003},                   // binary
      {test::frame("{\"command\":\"\xFF\"}"), 1007},  // no UTF-8
      {test::frame("{}", 3), 1002},                   // an opcode that does not exist
      {test::frame("{}", 0), 1002},                   // a continuation of nothing
      {test::frame(std::string(200, 'x'), 9), 1002},  // a ping that is too long
  };
  for (const auto& [bytes, code] : rows) {
    const auto client = connect();
    client->socket().send(bytes);
    EXPECT_EQ(next(*client), "") << code;
    // The library closes some without a word.
    EXPECT_TRUE(client->closeCode() == code || client->closeCode() == 0) << client->closeCode();
  }
  expectServed();
}

TEST_F(SocketHostile, OnlySixteenMayStay) {
  std::vector<std::unique_ptr<test::WebSocket>> clients;
  for (int i = 0; i < 16; ++i) clients.push_back(connect());
  EXPECT_THAT(statusOf(test::handshake(here())), HasSubstr(" 503 "));
  clients.pop_back();
  EXPECT_TRUE(test::eventually([&] {
    turn();
    test::WebSocket another(port_);
    return another.answer(20'000).starts_with("HTTP/1.1 101");
  }));
}

TEST_F(SocketHostile, ConnectionsThatSayNothingMakeRoom) {
  std::vector<std::unique_ptr<test::TcpSocket>> silent;
  for (int i = 0; i < 300; ++i) {
    silent.push_back(std::make_unique<test::TcpSocket>(port_));
    if (i % 2 == 0) silent.back()->send("GET / HTTP/1.1\r\nHost: ");
  }
  expectServed();
}

TEST_F(SocketHostile, TenThousandConnectionsDoNotDisturbAClient) {
  const auto client = connect();
  for (int i = 0; i < 10'000; ++i) {
    const test::TcpSocket socket(port_);
    ASSERT_TRUE(socket.isOpen());
    if (i % 500 != 0) continue;
    EXPECT_THAT(ask(*client, R"({"command":"status","id":7})"), HasSubstr("\"ok\":true"));
  }
  EXPECT_THAT(ask(*client, R"({"command":"status","id":7})"), HasSubstr("\"ok\":true"));
  expectServed();
}

TEST_F(SocketHostile, AStrangerWhoSaysNothingAndHalfARequestAreClosed) {
  open(Token(kSecret));
  const auto stranger = connect();
  test::TcpSocket half(port_);
  half.send("GET / HTTP/1.1\r\nHost: ");
  EXPECT_EQ(next(*stranger), "");
  EXPECT_TRUE(stranger->closeCode() != 0 || stranger->socket().hasEnded());
  EXPECT_EQ(half.receiveAll(20'000).find(" 200 "), std::string::npos);
  EXPECT_TRUE(half.hasEnded());
}

TEST_F(SocketHostile, TooManyLongAnswersAreRefused) {
  const auto client = connect();
  for (int i = 0; i < 20; ++i) client->send(R"([{"command":"dump","id":7}])");
  std::string last;
  for (int i = 0; i < 40 && last.find("10 a second") == std::string::npos; ++i) last = next(*client);
  EXPECT_THAT(last, HasSubstr("too many of these; 10 a second are taken"));
}

TEST_F(SocketHostile, ClientsThatHaveClosedTheirHalfAreGone) {
  std::vector<std::unique_ptr<test::WebSocket>> clients;
  for (int i = 0; i < 16; ++i) {
    clients.push_back(connect());
    clients.back()->socket().endSending();
  }
  for (const auto& client : clients) {
    EXPECT_EQ(next(*client), "");
    EXPECT_TRUE(client->socket().hasEnded());
  }
  expectServed();
}

using SocketSlow = SocketTest;

TEST_F(SocketSlow, AClientThatNeverReadsIsDroppedAndToldAndNobodyElse) {
  const std::string subscribe = R"({"command":"subscribe","id":7,"meters":false})";
  test::WebSocket slow(port_, "", 4096);
  ask(slow, subscribe);
  const auto other = connect();
  ask(*other, subscribe);
  constexpr int kChanges = 20'000;  // of 300 bytes, more than may wait
  int heard = 0;
  const auto hearUntil = [&](int count) {
    while (heard < count) {
      const auto text = other->receive(20'000);
      if (!text) return;
      if (text->find("\"changed\"") != std::string::npos) ++heard;
    }
  };
  for (int change = 1; change <= kChanges; ++change) {
    const std::string label(200, change % 2 == 0 ? 'a' : 'b');
    control_->execute(control::SetLabel{{0, 0}, label}, {}, [](const control::Answer&) {});
    turn();
    hearUntil(change - 500);  // or the changes would be faster than any client
  }
  hearUntil(kChanges);
  EXPECT_EQ(heard, kChanges);
  std::string last;
  for (std::string text; last.find("dropped") == std::string::npos && !(text = next(slow)).empty();)
    last = text;
  EXPECT_EQ(last, R"({"event":"dropped","why":"messages came faster than they were read"})");
  EXPECT_EQ(next(slow), "");
  EXPECT_EQ(slow.closeCode(), 1008);
}

TEST_F(SocketSlow, ASubscriberWhoseEventsCannotBeKeptIsToldSo) {
  const auto client = connect();
  ask(*client, R"({"command":"subscribe","id":7,"meters":false})");
  // The network's thread hears of these events only when the run has its next turn.
  for (int change = 1; change <= 20'000; ++change)
    control_->execute(control::SetRoute{{0, 0}, static_cast<float>(change)}, {}, [](const auto&) {});
  EXPECT_FALSE(door_->wantsChanges());
  std::string last;
  // The status has the last number, if it comes.
  for (std::string text;
       last.find("\"serial\":20000,") == std::string::npos && !(text = next(*client)).empty();)
    last = text;
  EXPECT_EQ(last, R"({"event":"dropped","why":"messages came faster than they were read"})");
  EXPECT_EQ(client->closeCode(), 1008);
}

}  // namespace
}  // namespace tolvane::ctl::http
