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

TEST(AggregateChoice, RefusesWhatIsNotThere) {
  EXPECT_EQ(chooseMember(kCandidates, "Piano").error().status, ExitStatus::noSuchDevice);
  EXPECT_EQ(chooseMember(kCandidates, "77").error().status, ExitStatus::noSuchDevice);
  EXPECT_EQ(chooseMember(kCandidates, "").error().status, ExitStatus::usage);
}

}  // namespace
}  // namespace tolvane::ctl
