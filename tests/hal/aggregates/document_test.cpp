// The content of a file of aggregates, and what is kept of it when it is rewritten.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/aggregates/aggregate_document.h"

namespace tolvane::test {
namespace {

using hal::Aggregate;
using hal::AggregateDocument;
using hal::AggregateMember;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Aggregate kStage{"Stage", {{"pipewire:usb", "USB Box", 18, 20}, {"pipewire:pci", "Rack", 0, 8}}};
const Aggregate kTour{"Tour – außen", {{"pipewire:pci", "Rack", 0, 8}}};

AggregateDocument parsed(const std::string& text) {
  const hal::AggregateRead read = AggregateDocument::parse(text);
  EXPECT_EQ(read.error, "");
  return read.document.value_or(AggregateDocument());
}

TEST(AggregateDocument, IsEmptyAtFirst) {
  EXPECT_THAT(AggregateDocument().aggregates(), IsEmpty());
  EXPECT_THAT(parsed(R"({"aggregates": []})").aggregates(), IsEmpty());
}

TEST(AggregateDocument, WhatIsWrittenIsReadAgain) {
  const AggregateDocument one = parsed(AggregateDocument().textWith(kStage));
  EXPECT_THAT(one.aggregates(), ElementsAre(kStage));
  const AggregateDocument two = parsed(one.textWith(kTour));
  EXPECT_THAT(two.aggregates(), ElementsAre(kStage, kTour));
  EXPECT_EQ(*two.find("Tour – außen"), kTour);
  EXPECT_EQ(two.find("stage"), nullptr);
  EXPECT_THAT(parsed(two.textWithout("Stage")).aggregates(), ElementsAre(kTour));
}

TEST(AggregateDocument, IsWrittenForPeopleToo) {
  EXPECT_EQ(AggregateDocument().textWith({"A", {{"pipewire:x", "X", 1, 2}}}), R"({
  "aggregates": [
    {
      "name": "A",
      "members": [
        {
          "uid": "pipewire:x",
          "name": "X",
          "inputChannels": 1,
          "outputChannels": 2
        }
      ]
    }
  ]
}
)");
}

TEST(AggregateDocument, UnknownMembersAreKeptWhereTheyAre) {
  const AggregateDocument document = parsed(R"({
    "comment": "mine", "deep": {"a": [1, 2.5, null, true]},
    "aggregates": [
      {"colour": "red", "name": "A", "members":
        [{"uid": "pipewire:x", "clock": 3, "name": "X", "inputChannels": 1, "outputChannels": 0}]},
      {"name": "B", "members": [{"uid": "pipewire:y", "name": "Y", "inputChannels": 0, "outputChannels": 1}]}
    ],
    "last": []})");
  EXPECT_EQ(parsed(document.textWithout("B")).textWith({"C", {{"pipewire:z", "Z", 2, 2}}}), R"({
  "comment": "mine",
  "deep": {
    "a": [
      1,
      2.5,
      null,
      true
    ]
  },
  "aggregates": [
    {
      "colour": "red",
      "name": "A",
      "members": [
        {
          "uid": "pipewire:x",
          "clock": 3,
          "name": "X",
          "inputChannels": 1,
          "outputChannels": 0
        }
      ]
    },
    {
      "name": "C",
      "members": [
        {
          "uid": "pipewire:z",
          "name": "Z",
          "inputChannels": 2,
          "outputChannels": 2
        }
      ]
    }
  ],
  "last": []
}
)");
}

TEST(AggregateDocument, WholeNumbersMayBeWrittenInAnyWay) {
  const AggregateDocument document = parsed(R"({"aggregates": [{"name": "A", "members": [
      {"uid": "pipewire:x", "name": "", "inputChannels": 2.0, "outputChannels": 1e3}]}]})");
  EXPECT_THAT(document.aggregates(), ElementsAre(Aggregate{"A", {{"pipewire:x", "", 2, 1000}}}));
}

TEST(AggregateNames, NotAllCanBeThatOfANewOne) {
  EXPECT_EQ(hal::whyNoNewAggregateName("Bühne 2"), "");
  EXPECT_EQ(hal::whyNoNewAggregateName(""), "an aggregate's name cannot be empty");
  EXPECT_EQ(hal::whyNoNewAggregateName("  "), "an aggregate's name cannot be empty");
  EXPECT_EQ(hal::whyNoNewAggregateName("B\xFChne"), "an aggregate's name must be UTF-8 text");
  EXPECT_EQ(hal::whyNoNewAggregateName("All Interfaces"),
            "\"All Interfaces\" is the name of the aggregate of all sound cards");
}

TEST(AggregateNames, OfNewOnesHaveNoControlCharacters) {
  for (const char* const name : {"a\nb", "a\033[2Jb", "a\x7F", "a\xC2\x80", "a\xC2\x9B", "\xC2\x9F"}) {
    EXPECT_EQ(hal::whyNoNewAggregateName(name), "an aggregate's name cannot have control characters");
  }
  EXPECT_EQ(hal::whyNoNewAggregateName("\xC2\xA0 is a blank"), "");
}

TEST(AggregateNames, OfNewOnesHaveAtMostAHundredCharacters) {
  std::string longest;
  for (int i = 0; i < 100; ++i) longest += "ü";
  EXPECT_EQ(hal::whyNoNewAggregateName(longest), "");
  EXPECT_EQ(hal::whyNoNewAggregateName(longest + "x"),
            "an aggregate's name cannot have more than 100 characters");
}

TEST(AggregateNames, OfThoseThatAreThereMayBeAsTheyAre) {
  const std::string text =
      R"({"aggregates": [{"name": "a\u001b[2J\n\u009b)" + std::string(1000, 'x') +
      R"(", "members": [)"
      R"({"uid": "pipewire:x", "name": "X", "inputChannels": 1, "outputChannels": 1}]}]})";
  const AggregateDocument document = parsed(text);
  ASSERT_EQ(document.aggregates().size(), 1U);
  const std::string name = "a\033[2J\n\xC2\x9B" + std::string(1000, 'x');
  EXPECT_EQ(document.aggregates()[0].name, name);
  EXPECT_THAT(parsed(document.textWithout(name)).aggregates(), IsEmpty());
}

TEST(AggregateNames, NoTwoAggregatesAreOneDevice) {
  EXPECT_EQ(hal::aggregateUid("Stage"), "pipewire-aggregate:Stage");
  EXPECT_FALSE(hal::canBeAggregated(hal::aggregateUid("Stage")));
  EXPECT_FALSE(hal::canBeAggregated("jack:system"));
  EXPECT_FALSE(hal::canBeAggregated("pipewire:"));
  EXPECT_TRUE(hal::canBeAggregated("pipewire:alsa_card.usb"));
}

}  // namespace
}  // namespace tolvane::test
