// Subscribers hear changes and meters until they stop asking.
#include <limits>

#include <gmock/gmock.h>

#include "ctl/osc/door_fixture.h"

namespace tolvane::ctl::osc {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<Message> named(const std::vector<Message>& messages, const std::string& address) {
  std::vector<Message> found;
  for (const Message& message : messages) {
    if (message.address == address) found.push_back(message);
  }
  return found;
}

using OscSubscription = DoorTest;

TEST_F(OscSubscription, TellsEveryChangeToAllAlsoToWhoeverAsked) {
  test::UdpSocket other;
  ask({"/tolvane/subscribe", {std::string("changes")}});
  ask({"/tolvane/subscribe", {std::string("changes")}}, other);
  const auto heard = ask({"/tolvane/route/gain", {1, 1, 0.0F}});
  const std::vector<Message> events = {
      {"/tolvane/event/changed", {1, std::string("edit"), 1, 0}},
      {"/tolvane/event/route", {1, 1, 1, 1.0F, 0.0F, 1, std::string()}},
  };
  EXPECT_EQ(heard[0], (Message{"/tolvane/route/gain/reply", {1}}));
  EXPECT_EQ(std::vector<Message>(heard.begin() + 1, heard.end()), events);
  auto others = messagesIn(other);
  EXPECT_EQ(named(others, "/tolvane/event/changed"), std::vector<Message>{events[0]});
  EXPECT_THAT(named(ask({"/tolvane/route/remove", {1, 1}}), "/tolvane/event/removed"),
              ElementsAre(Message{"/tolvane/event/removed", {2, 1, 1}}));
}

TEST_F(OscSubscription, SerialNumbersFollowEachOther) {
  ask({"/tolvane/subscribe", {std::string("changes")}});
  for (int change = 1; change <= 300; ++change) {
    const auto heard =
        named(ask({"/tolvane/route", {1, 1, static_cast<float>(change)}}), "/tolvane/event/changed");
    ASSERT_EQ(heard.size(), 1U);
    ASSERT_EQ(heard[0].arguments[0], Argument(change));
  }
}

TEST_F(OscSubscription, MetersComeTwentyTimesASecond) {
  ask({"/tolvane/subscribe", {std::string("meters")}});
  std::vector<Message> heard;
  for (int ms = 0; ms < 1000; ++ms) {
    now_ += milliseconds(1);
    turn();
    for (Message& message : messagesIn(client_)) heard.push_back(std::move(message));
  }
  const auto inputs = named(heard, "/tolvane/event/inputs");
  EXPECT_GE(inputs.size(), 18U);
  EXPECT_LE(inputs.size(), 21U);
  EXPECT_EQ(inputs[0].arguments, (std::vector<Argument>{1, 0.5F, 0.25F, 0, 0.0F, 0.0F, 0}));
  EXPECT_EQ(named(heard, "/tolvane/event/outputs")[0].arguments,
            (std::vector<Argument>{1, 1.0F, 0.5F, 1, 0.0F, 0.0F, 0}));
  EXPECT_THAT(named(heard, "/tolvane/event/status"), IsEmpty());
}

TEST_F(OscSubscription, EndsAfterTenSecondsUnlessRepeated) {
  ask({"/tolvane/subscribe", {std::string("changes")}});
  now_ += seconds(9);
  ask({"/tolvane/subscribe", {std::string("changes")}});
  now_ += seconds(9);
  EXPECT_THAT(named(ask({"/tolvane/route", {1, 1, 0.1F}}), "/tolvane/event/changed"), testing::SizeIs(1));
  now_ += seconds(1);
  EXPECT_THAT(named(ask({"/tolvane/route", {1, 1, 0.2F}}), "/tolvane/event/changed"), IsEmpty());
  EXPECT_FALSE(door_->wantsChanges());
}

TEST_F(OscSubscription, ChannelsBeyondAnIntegerAreTheNearestOne) {
  constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();
  ask({"/tolvane/subscribe", {std::string("changes")}});
  test::writePatch(scenes_ + "/Far.json", {{kLast, -kLast - 1, 1.0F, false}});
  EXPECT_THAT(named(ask({"/tolvane/scene", {std::string("Far")}}), "/tolvane/event/route"),
              ElementsAre(Message{"/tolvane/event/route",
                                  {1, 2147483647, -2147483647 - 1, 1.0F, 0.0F, 0, std::string()}}));
}

TEST_F(OscSubscription, EndsWhenAsked) {
  ask({"/tolvane/subscribe", {}});
  EXPECT_TRUE(door_->wantsMeters());
  ask({"/tolvane/unsubscribe", {}});
  EXPECT_FALSE(door_->wantsMeters());
  EXPECT_THAT(named(ask({"/tolvane/undo", {}}), "/tolvane/event/changed"), IsEmpty());
}

TEST_F(OscSubscription, MayNameAnotherPort) {
  test::UdpSocket listener;
  ask({"/tolvane/subscribe", {std::string("changes"), static_cast<std::int32_t>(listener.port())}});
  ask({"/tolvane/route", {1, 1, 0.1F}});
  EXPECT_THAT(named(messagesIn(listener), "/tolvane/event/changed"),
              ElementsAre(Message{"/tolvane/event/changed", {1, std::string("edit"), 1, 0}}));
  ask({"/tolvane/unsubscribe", {static_cast<std::int32_t>(listener.port())}});
  EXPECT_FALSE(door_->wantsChanges());
}

TEST_F(OscSubscription, IsForSixteen) {
  std::vector<std::unique_ptr<test::UdpSocket>> clients;
  for (int c = 0; c < 16; ++c) {
    clients.push_back(std::make_unique<test::UdpSocket>());
    EXPECT_THAT(ask({"/tolvane/subscribe", {std::string("changes")}}, *clients.back()),
                Contains(Message{"/tolvane/subscribe/reply", {0}}));
  }
  EXPECT_THAT(
      ask({"/tolvane/subscribe", {}}),
      ElementsAre(Message{"/tolvane/subscribe/error", {std::string("there are 16 subscribers already")}}));
  ask({"/tolvane/unsubscribe", {}}, *clients[3]);
  EXPECT_THAT(ask({"/tolvane/subscribe", {std::string("changes")}}),
              Contains(Message{"/tolvane/subscribe/reply", {0}}));
}

TEST_F(OscSubscription, ASlowOneIsDroppedAndToldSo) {
  ask({"/tolvane/subscribe", {std::string("changes")}});
  // Changes without a chance to send.
  for (int change = 1; change <= 1100; ++change)
    control_->execute(control::SetRoute{{0, 0}, static_cast<float>(change)}, {}, [](const auto&) {});
  EXPECT_FALSE(door_->wantsChanges());
  turn();
  EXPECT_THAT(messagesIn(client_),
              Contains(Message{"/tolvane/event/dropped",
                               {std::string("events came faster than they could be sent")}}));
}

TEST_F(OscSubscription, ALongListOfChangesComesInSeveralDatagrams) {
  std::vector<PatchConnection> routes;
  for (std::int64_t r = 0; r < 500; ++r) routes.push_back({r, r, 1.0F, true});
  test::writePatch(scenes_ + "/Big.json", routes);
  ask({"/tolvane/subscribe", {std::string("changes")}});
  client_.send(encodePackets({{"/tolvane/scene", {std::string("Big")}}}).front(), port_);
  turn();
  std::size_t told = 0;
  while (const auto datagram = client_.receive()) {
    EXPECT_LE(datagram->size(), 1500U);
    told += named(decodePacket(*datagram).value().messages, "/tolvane/event/route").size();
  }
  EXPECT_EQ(told, 500U);
}

}  // namespace
}  // namespace tolvane::ctl::osc
