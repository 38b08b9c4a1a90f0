// The choice of a device as a member of an aggregate.
#include "ctl/aggregate/choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

using testing::HasSubstr;

const std::vector<MemberCandidate> kCandidates{
    {{2, "USB Box", 18, 20}, "pipewire:usb"},
    {{3, "Rack", 0, 8}, "pipewire:pci"},
    {{4, "All Interfaces", 18, 28}, "pipewire-aggregate:All Interfaces", true},
    {{5, "Old Card", 2, 2}, "alsa:old"},
    {{6, "pipewire:pci", 1, 1}, "pipewire:odd"}};

TEST(AggregateChoice, IsByIdentityNameIdentifierOrPartOfTheName) {
  const hal::AggregateMember box{"pipewire:usb", "USB Box", 18, 20};
  for (const char* const wanted : {"pipewire:usb", "USB Box", "2", "box"}) {
    const auto choice = chooseMember(kCandidates, wanted);
    ASSERT_TRUE(choice) << wanted;
    EXPECT_EQ(choice.value(), box) << wanted;
  }
  EXPECT_EQ(chooseMember(kCandidates, "pipewire:pci").value().name, "Rack");  // not the device of that name
}

TEST(AggregateChoice, RefusesWhatCannotBeAMemberAndSaysWhatCan) {
  const auto aggregate = chooseMember(kCandidates, "All Interfaces");
  ASSERT_FALSE(aggregate);
  EXPECT_EQ(aggregate.error().status, ExitStatus::failed);
  EXPECT_EQ(aggregate.error().text,
            "All Interfaces: an aggregate cannot be in another one; these can be used:\n"
            "  2  USB Box\n  3  Rack\n  6  pipewire:pci");
  const auto other = chooseMember(kCandidates, "5");
  ASSERT_FALSE(other);
  EXPECT_EQ(other.error().status, ExitStatus::failed);
  EXPECT_THAT(
      other.error().text,
      HasSubstr("Old Card: is not a device of PipeWire, which runs aggregates; these can be used:\n  2"));
  const auto nothing = chooseMember({kCandidates[3]}, "Old Card");
  EXPECT_THAT(nothing.error().text, HasSubstr("these can be used: none that is there"));
}

const std::vector<MemberCandidate> kWithMonitors{{{2, "Game Audio", 0, 2}, "pipewire:game", false, 2},
                                                 {{3, "Box", 4, 8}, "pipewire:box", false, 8},
                                                 {{4, "Microphone", 1, 0}, "pipewire:mic"},
                                                 {{5, "Box:monitor", 6, 0}, "pipewire:other"}};

TEST(AggregateChoice, OfAMonitorIsByTheDeviceBeforeTheColon) {
  const hal::AggregateMember monitor{"pipewire:game:monitor", "Game Audio:monitor", 2, 0};
  for (const char* const wanted :
       {"pipewire:game:monitor", "Game Audio:monitor", "2:monitor", "game:monitor"}) {
    const auto choice = chooseMember(kWithMonitors, wanted);
    ASSERT_TRUE(choice) << wanted;
    EXPECT_EQ(choice.value(), monitor) << wanted;
  }
}

TEST(AggregateChoice, TakesADeviceThatIsCalledSoBeforeAMonitor) {
  EXPECT_EQ(chooseMember(kWithMonitors, "Box:monitor").value().uid, "pipewire:other");
  EXPECT_EQ(chooseMember(kWithMonitors, ":monitor").value().uid, "pipewire:other");  // a part of its name
  EXPECT_EQ(chooseMember(kWithMonitors, "pipewire:box:monitor").value().inputChannels, 8U);
}

TEST(AggregateChoice, RefusesTheMonitorOfWhatHasNone) {
  const auto choice = chooseMember(kWithMonitors, "Microphone:monitor");
  ASSERT_FALSE(choice);
  EXPECT_EQ(choice.error().status, ExitStatus::failed);
  EXPECT_EQ(choice.error().text,
            "Microphone: has no monitor: only outputs of PipeWire have one; these can be used:\n"
            "  2  Game Audio\n  3  Box");
  EXPECT_EQ(chooseMember(kWithMonitors, "Piano:monitor").error().status, ExitStatus::noSuchDevice);
}

TEST(AggregateChoice, RefusesWhatIsNotThere) {
  EXPECT_EQ(chooseMember(kCandidates, "Piano").error().status, ExitStatus::noSuchDevice);
  EXPECT_EQ(chooseMember(kCandidates, "77").error().status, ExitStatus::noSuchDevice);
  EXPECT_EQ(chooseMember(kCandidates, "").error().status, ExitStatus::usage);
}

}  // namespace
}  // namespace tolvane::ctl
