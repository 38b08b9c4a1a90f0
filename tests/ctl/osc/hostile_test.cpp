// Datagrams that nobody should send: each gets an error or nothing, and changes nothing.
#include <random>

#include <gmock/gmock.h>

#include "ctl/doors/token.h"
#include "ctl/osc/door_fixture.h"

namespace tolvane::ctl::osc {
namespace {

using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::string_literals;

const std::string kHead = "#bundle\0\0\0\0\0\0\0\0\1"s;
const std::string kSecret = "0123456789abcdef";

std::string nested(int depth) {
  std::string packet = encodePackets({{"/tolvane/route", {1, 1, 0.1F}}}).front();
  for (int level = 0; level < depth; ++level) {
    const auto size = static_cast<std::uint32_t>(packet.size());
    std::string length;
    for (const int shift : {24, 16, 8, 0}) length += static_cast<char>(size >> shift & 0xFFU);
    packet = kHead + length + packet;
  }
  return packet;
}

std::string tooMany() {
  std::string packet = kHead;
  const std::string message = "/tolvane/undo\0\0\0,\0\0\0"s;
  for (int i = 0; i < 257; ++i) packet += "\0\0\0\x14"s + message;
  return packet;
}

class OscHostile : public DoorTest {
 protected:
  void expectNothingChanged() {
    EXPECT_EQ(control_->serial(), 0U);
    EXPECT_EQ(control_->routes(), (Routes{{0, 0, 0.5F, true}, {1, 1, 1.0F, false}}));
  }
};

TEST_F(OscHostile, WhatIsNoMessageIsRefused) {
  const std::string noMessage = "this is no OSC message with type tags";
  for (const std::string& datagram :
       {"hello"s, "\0\0\0\0"s, "/"s, "/tolvane/undo"s, "/tolvane/undo\0\0\0"s, "/tolvane/undo\0\0\0ifs\0"s,
        "/tolvane/undo\0\0\0,i\0\0"s, "/tolvane/undo\0\0\0,i\0\0\0\0"s, "/tolvane/undo\0\0\0,\0\0\0rest"s,
        "/tolvane/scene\0\0,s\0\0name"s, "/tolvane/scene\0\0,b\0\0\xFF\xFF\xFF\xFF"s,
        "/tolvane/scene\0\0,b\0\0\x7F\xFF\xFF\xFF"s, "/tolvane/scene\0\0,?\0\0"s, std::string(65507, 'x'),
        std::string(65507, '\0'), ",i\0\0\0\0\0\1"s}) {
    EXPECT_THAT(exchange(datagram), ElementsAre(Message{"/tolvane/error", {noMessage}}))
        << testing::PrintToString(datagram.substr(0, 40));
  }
  expectNothingChanged();
}

TEST_F(OscHostile, ABundleThatIsNotWholeChangesNothing) {
  const std::string good = encodePackets({{"/tolvane/route", {1, 1, 0.1F}}}).front();
  ASSERT_EQ(good.size(), 36U);
  const std::string begun = kHead + "\0\0\0\x24"s + good;
  for (const std::string& datagram :
       {"#bundle\0"s, kHead.substr(0, 12), begun + "\0"s, begun + "\0\0\0\x24"s,
        begun + "\0\0\0\x24"s + good.substr(0, 32), begun + "\xFF\xFF\xFF\xFC"s, begun + "\0\0\0\0"s,
        begun + "\0\0\0\5"s + "hello"s, begun + "\0\0\0\4/abc"s, nested(9), tooMany()}) {
    EXPECT_THAT(
        exchange(datagram),
        ElementsAre(Message{"/tolvane/error", {"this is no whole bundle of OSC messages with type tags"s}}));
  }
  expectNothingChanged();
  EXPECT_THAT(exchange(kHead), IsEmpty()) << "an empty bundle asks for nothing";
  EXPECT_THAT(exchange(nested(8)), ElementsAre(Message{"/tolvane/route/reply", {1}}));
}

TEST_F(OscHostile, AnEmptyDatagramIsRefused) {
  EXPECT_THAT(exchange(""),
              ElementsAre(Message{"/tolvane/error", {"this is no OSC message with type tags"s}}));
}

TEST_F(OscHostile, ALongAddressIsNotSentBack) {
  EXPECT_THAT(ask({"/" + std::string(60'000, 'a'), {}}),
              ElementsAre(Message{"/tolvane/error", {"there is no such address"s}}));
}

// Or two doors would answer each other for ever, and a door that was told its own port itself.
TEST_F(OscHostile, AnswersAndEventsAreNeverAnswered) {
  for (const char* address :
       {"/tolvane/error", "/tolvane/undo/error", "/tolvane/undo/reply", "/tolvane/dump/reply/route",
        "/tolvane/event/changed", "/tolvane/event/inputs", "/tolvane/event/changed/error"})
    EXPECT_THAT(ask({address, {1}}), IsEmpty()) << address;
}

TEST_F(OscHostile, SubscribingTheDoorToItselfMakesNoLoop) {
  ask({"/tolvane/subscribe", {"changes"s, static_cast<std::int32_t>(port_)}});
  ask({"/tolvane/route", {1, 1, 0.1F}});
  ask({"/tolvane/unsubscribe", {static_cast<std::int32_t>(port_)}});
  for (int i = 0; i < 100; ++i) turn();
  pollfd door{door_->descriptor(), POLLIN, 0};
  EXPECT_EQ(::poll(&door, 1, 0), 0) << "it still talks to itself";
}

TEST_F(OscHostile, AFloodIsCutAndSaidToBeSo) {
  const std::string undo = encodePackets({{"/tolvane/undo", {}}}).front();
  int answered = 0;
  int complaints = 0;
  for (int message = 0; message < 10'000; ++message) {
    for (const Message& answer : exchange(undo)) {
      ++(answer.address == "/tolvane/error" ? complaints : answered);
    }
  }
  EXPECT_EQ(answered, 4000) << "a burst";
  EXPECT_EQ(complaints, 1) << "one a second";
  now_ += std::chrono::milliseconds(100);
  for (int message = 0; message < 3000; ++message) answered += static_cast<int>(exchange(undo).size());
  EXPECT_EQ(answered, 6000) << "20,000 a second";
  now_ += seconds(1);
  EXPECT_THAT(exchange(undo), testing::SizeIs(1));
}

TEST_F(OscHostile, ABundleBeyondTheRateIsIgnoredWhole) {
  const std::string undo = encodePackets({{"/tolvane/undo", {}}}).front();
  for (int message = 0; message < 3999; ++message) exchange(undo);
  const std::string bundle =
      encodePackets({{"/tolvane/route", {1, 1, 0.1F}}, {"/tolvane/route/mute", {1, 1, 1}}}).front();
  EXPECT_THAT(exchange(bundle),
              ElementsAre(Message{"/tolvane/error", {"too many messages; some are ignored"s}}));
  expectNothingChanged();
}

TEST_F(OscHostile, WhatTakesLongIsTakenTenTimesASecond) {
  const std::string dump = encodePackets({{"/tolvane/dump", {}}}).front();
  for (int message = 0; message < 10; ++message) EXPECT_THAT(exchange(dump), testing::SizeIs(5));
  EXPECT_THAT(exchange(dump),
              ElementsAre(Message{"/tolvane/dump/error", {"too many of these; 10 a second are taken"s}}));
  EXPECT_THAT(ask({"/tolvane/status", {}}), testing::SizeIs(1));
  now_ += std::chrono::milliseconds(101);
  EXPECT_THAT(exchange(dump), testing::SizeIs(5));
}

TEST_F(OscHostile, WithATokenNothingIsTakenFromStrangers) {
  open(Token(kSecret));
  const Message first{"/tolvane/route/error", {"say /tolvane/hello TOKEN first"s}};
  EXPECT_THAT(ask({"/tolvane/route", {1, 1, 0.1F}}), ElementsAre(first));
  EXPECT_THAT(ask({"/tolvane/dump", {}}), testing::SizeIs(1));
  EXPECT_THAT(ask({"/tolvane/subscribe", {}}), testing::SizeIs(1));
  EXPECT_FALSE(door_->wantsChanges());
  EXPECT_THAT(exchange(encodePackets({{"/tolvane/undo", {}}, {"/tolvane/undo", {}}}).front()),
              testing::SizeIs(1))
      << "one answer at most";
  expectNothingChanged();
}

TEST_F(OscHostile, TheTokenOpensForTheWholeAddress) {
  open(Token(kSecret));
  EXPECT_THAT(ask({"/tolvane/hello", {kSecret}}), ElementsAre(Message{"/tolvane/hello/reply", {0}}));
  EXPECT_THAT(ask({"/tolvane/route", {1, 1, 0.1F}}), ElementsAre(Message{"/tolvane/route/reply", {1}}));
  test::UdpSocket otherPort;
  EXPECT_THAT(ask({"/tolvane/route", {1, 1, 0.2F}}, otherPort),
              ElementsAre(Message{"/tolvane/route/reply", {2}}));
  test::UdpSocket otherMachine("127.0.0.2");
  EXPECT_THAT(ask({"/tolvane/route", {1, 1, 0.3F}}, otherMachine),
              ElementsAre(Message{"/tolvane/route/error", {"say /tolvane/hello TOKEN first"s}}));
}

TEST_F(OscHostile, ABundleThatBeginsWithTheTokenIsTakenWhole) {
  open(Token(kSecret));
  const auto bundleWith = [](const std::string& token) {
    return encodePackets({{"/tolvane/hello", {token}}, {"/tolvane/route", {1, 1, 0.1F}}}).front();
  };
  EXPECT_THAT(exchange(bundleWith("x")),
              ElementsAre(Message{"/tolvane/hello/error", {"the token is wrong"s}}));
  expectNothingChanged();
  EXPECT_THAT(exchange(bundleWith(kSecret)),
              ElementsAre(Message{"/tolvane/hello/reply", {0}}, Message{"/tolvane/route/reply", {1}}));
}

TEST_F(OscHostile, TheRightTokenIsNoGuess) {
  open(Token(kSecret));
  for (int hello = 0; hello < 20; ++hello)
    EXPECT_THAT(ask({"/tolvane/hello", {kSecret}}), ElementsAre(Message{"/tolvane/hello/reply", {0}}));
}

TEST_F(OscHostile, TheTokenMustBeSaidAgainAfterAnHourOfSilence) {
  open(Token(kSecret));
  ask({"/tolvane/hello", {kSecret}});
  now_ += std::chrono::minutes(59);
  EXPECT_THAT(ask({"/tolvane/undo", {}}),
              ElementsAre(Message{"/tolvane/undo/error", {"there is nothing to undo"s}}));
  now_ += std::chrono::minutes(61);
  EXPECT_THAT(ask({"/tolvane/undo", {}}),
              ElementsAre(Message{"/tolvane/undo/error", {"say /tolvane/hello TOKEN first"s}}));
}

TEST_F(OscHostile, WrongTokensAreRefusedAndGuessesAreSlow) {
  open(Token(kSecret));
  const Message wrong{"/tolvane/hello/error", {"the token is wrong"s}};
  for (const std::string& guess : {""s, "0"s, kSecret + "0", "0123456789abcdeg"s, std::string(60'000, '0')})
    EXPECT_THAT(ask({"/tolvane/hello", {guess}}), ElementsAre(wrong));
  const Message slow{"/tolvane/hello/error", {"too many attempts; wait a few seconds"s}};
  EXPECT_THAT(ask({"/tolvane/hello", {kSecret}}), ElementsAre(slow)) << "also the right one";
  now_ += seconds(1);
  EXPECT_THAT(ask({"/tolvane/hello", {kSecret}}), ElementsAre(Message{"/tolvane/hello/reply", {0}}));
  EXPECT_THAT(ask({"/tolvane/hello", {5}}),
              ElementsAre(Message{"/tolvane/hello/error", {"the token must be a string"s}}));
}

TEST_F(OscHostile, StrangersAreAnsweredFiftyTimesASecondTogether) {
  open(Token(kSecret));
  int answers = 0;
  for (int host = 1; host <= 200; ++host) {
    test::UdpSocket stranger(("127.0.1." + std::to_string(host)).c_str());
    answers += static_cast<int>(ask({"/tolvane/dump", {}}, stranger).size());
  }
  EXPECT_EQ(answers, 50);
  EXPECT_THAT(ask({"/tolvane/hello", {kSecret}}), ElementsAre(Message{"/tolvane/hello/reply", {0}}))
      << "whoever knows the token gets in meanwhile";
}

TEST_F(OscHostile, SixteenAddressesMayKnowTheToken) {
  open(Token(kSecret));
  for (int host = 1; host <= 17; ++host) {
    test::UdpSocket client(("127.0.1." + std::to_string(host)).c_str());
    const auto answer = ask({"/tolvane/hello", {kSecret}}, client);
    EXPECT_THAT(answer,
                ElementsAre(host <= 16 ? Message{"/tolvane/hello/reply", {0}}
                                       : Message{"/tolvane/hello/error", {"there are 16 clients already"s}}));
  }
}

TEST_F(OscHostile, RandomDatagramsNeverDoHarm) {
  std::mt19937 random(1);
  const std::string good =
      encodePackets({{"/tolvane/route", {1, 1, 0.5F}}, {"/tolvane/route/mute", {1, 1, 0}}}).front();
  for (int round = 0; round < 200'000; ++round) {
    std::string datagram = good.substr(0, random() % (good.size() + 1));
    for (unsigned changes = random() % 8; changes > 0 && !datagram.empty(); --changes)
      datagram[random() % datagram.size()] = static_cast<char>(random());
    static_cast<void>(decodePacket(datagram));
  }
}

}  // namespace
}  // namespace tolvane::ctl::osc
