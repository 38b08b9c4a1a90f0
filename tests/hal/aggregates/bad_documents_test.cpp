// Every kind of invalid file of aggregates: what is wrong, and where.
#include <ostream>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/aggregates/aggregate_document.h"

namespace tolvane::test {
namespace {

using hal::AggregateDocument;

std::string errorOf(const std::string& text) {
  const hal::AggregateRead read = AggregateDocument::parse(text);
  EXPECT_FALSE(read.document.has_value());
  return read.error;
}

/// A document with this text as its only aggregate, or as that aggregate's only member.
std::string withAggregate(const std::string& aggregate) {
  return "{\"aggregates\": [\n" + aggregate + "\n]}";
}
std::string withMember(const std::string& member) {
  return withAggregate("{\"name\": \"A\", \"members\": [\n" + member + "\n]}");
}

struct Bad {
  std::string text;
  std::string error;
};

void PrintTo(const Bad& bad, std::ostream* out) {
  *out << bad.text;
}

class BadAggregates : public testing::TestWithParam<Bad> {};

TEST_P(BadAggregates, AreRefusedWithTheMemberAndThePlace) {
  EXPECT_EQ(errorOf(GetParam().text), GetParam().error);
}

const char* const kRight = R"({"uid": "pipewire:x", "name": "X", "inputChannels": 1, "outputChannels": 1})";

INSTANTIATE_TEST_SUITE_P(
    Documents, BadAggregates,
    testing::Values(
        Bad{"[]", "line 1, column 1: expected an object, found array"},
        Bad{"  7", "line 1, column 3: expected an object, found number"},
        Bad{"{}", "line 1, column 1: \"aggregates\" is missing"},
        Bad{"{\n  \"aggregates\": {}}", "line 2, column 17: /aggregates: expected an array, found object"},
        Bad{withAggregate("\"A\""), "line 2, column 1: /aggregates/0: expected an object, found string"},
        Bad{withAggregate(R"({"members": []})"), "line 2, column 1: /aggregates/0: \"name\" is missing"},
        Bad{withAggregate(R"({"name": 5})"),
            "line 2, column 10: /aggregates/0/name: expected a string, found number"},
        Bad{withAggregate(R"({"name": ""})"),
            "line 2, column 10: /aggregates/0/name: an aggregate's name cannot be empty"},
        Bad{withAggregate(R"({"name": "All Interfaces"})"),
            "line 2, column 10: /aggregates/0/name: \"All Interfaces\" is the name of the aggregate of all "
            "sound cards"},
        Bad{withAggregate(R"({"name": "A"})"), "line 2, column 1: /aggregates/0: \"members\" is missing"},
        Bad{withAggregate(R"({"name": "A", "members": null})"),
            "line 2, column 26: /aggregates/0/members: expected an array, found null"},
        Bad{withAggregate(R"({"name": "A", "members": []})"),
            "line 2, column 26: /aggregates/0/members: expected 1 to 64 devices"},
        Bad{withAggregate(std::string(R"({"name": "A", "members": [)") + kRight + "]},\n{\"members\": [" +
                          kRight + "], \"name\": \"A\"}"),
            "line 3, column 100: /aggregates/1/name: the same name twice"}));

INSTANTIATE_TEST_SUITE_P(
    Members, BadAggregates,
    testing::Values(
        Bad{withMember("true"),
            "line 3, column 1: /aggregates/0/members/0: expected an object, found boolean"},
        Bad{withMember(R"({"name": "X", "inputChannels": 1, "outputChannels": 1})"),
            "line 3, column 1: /aggregates/0/members/0: \"uid\" is missing"},
        Bad{withMember(R"({"uid": ["pipewire:x"], "name": "X", "inputChannels": 1, "outputChannels": 1})"),
            "line 3, column 9: /aggregates/0/members/0/uid: expected a string, found array"},
        Bad{withMember(R"({"uid": "jack:x", "name": "X", "inputChannels": 1, "outputChannels": 1})"),
            "line 3, column 9: /aggregates/0/members/0/uid: this is no device of PipeWire"},
        Bad{withMember(
                R"({"uid": "pipewire-aggregate:B", "name": "B", "inputChannels": 1, "outputChannels": 1})"),
            "line 3, column 9: /aggregates/0/members/0/uid: this is no device of PipeWire"},
        Bad{withMember(R"({"uid": "pipewire:x", "inputChannels": 1, "outputChannels": 1})"),
            "line 3, column 1: /aggregates/0/members/0: \"name\" is missing"},
        Bad{withMember(R"({"uid": "pipewire:x", "name": "X", "outputChannels": 1})"),
            "line 3, column 1: /aggregates/0/members/0: \"inputChannels\" is missing"},
        Bad{withMember(R"({"uid": "pipewire:x", "name": "X", "inputChannels": "1", "outputChannels": 1})"),
            "line 3, column 53: /aggregates/0/members/0/inputChannels: expected a number of channels, found "
            "string"},
        Bad{withMember(R"({"uid": "pipewire:x", "name": "X", "inputChannels": 1.5, "outputChannels": 1})"),
            "line 3, column 53: /aggregates/0/members/0/inputChannels: expected a whole number from 0 to "
            "1024"},
        Bad{withMember(R"({"uid": "pipewire:x", "name": "X", "inputChannels": -1, "outputChannels": 1})"),
            "line 3, column 53: /aggregates/0/members/0/inputChannels: expected a whole number from 0 to "
            "1024"},
        Bad{withMember(R"({"uid": "pipewire:x", "name": "X", "inputChannels": 1, "outputChannels": 1025})"),
            "line 3, column 74: /aggregates/0/members/0/outputChannels: expected a whole number from 0 to "
            "1024"},
        Bad{withMember(
                R"({"uid": "pipewire:x", "name": "X", "inputChannels": 18446744073709551617, "outputChannels": 1})"),
            "line 3, column 53: /aggregates/0/members/0/inputChannels: expected a whole number from 0 to "
            "1024"},
        Bad{withMember(R"({"uid": "pipewire:x", "name": "X", "inputChannels": 0, "outputChannels": 0})"),
            "line 3, column 1: /aggregates/0/members/0: a device without channels"},
        Bad{withMember(std::string(kRight) + ",\n" + kRight),
            "line 4, column 9: /aggregates/0/members/1/uid: the same device twice"}));

TEST(BadAggregateText, IsRefusedWithThePlace) {
  EXPECT_EQ(errorOf(""), "line 1, column 1: there is no text");
  EXPECT_THAT(errorOf(" "), testing::StartsWith("line 1, column 2: syntax error"));
  EXPECT_THAT(errorOf("{\"aggregates\": [}"), testing::StartsWith("line 1, column 17: syntax error"));
  EXPECT_THAT(errorOf("{\n \"aggregates\": []\n} x"), testing::StartsWith("line 3, column 3: syntax error"));
  EXPECT_THAT(errorOf("{\"aggregates\": [], \"x\": \"\xFC\"}"),
              testing::StartsWith("line 1, column 26: syntax error"));
}

TEST(BadAggregateText, ANulByteIsFoundWhereverItIs) {
  using namespace std::string_literals;
  EXPECT_EQ(errorOf("{\"aggregates\": []}\n\0more"s),
            "line 2, column 1: found a NUL byte; JSON is UTF-8 text");
}

TEST(BadAggregateText, NestingIsBounded) {
  const std::string deep = "{\"aggregates\": [], \"x\": " + std::string(100000, '[');
  EXPECT_EQ(errorOf(deep), "line 1, column 88: nesting deeper than 64");
}

TEST(BadAggregateText, ANumberBeyondAnyIsRefused) {
  EXPECT_EQ(errorOf(R"({"aggregates": [], "x": 1e999})"), "a number is out of range");
}

}  // namespace
}  // namespace tolvane::test
