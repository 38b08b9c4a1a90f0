// JSON that is no patch: a wrong kind of value in each place.
#include <array>
#include <string>

#include <gtest/gtest.h>

#include "core/patch/bad_patch.h"
#include "core/patch/patch_text.h"

namespace tolvane::test {
namespace {

struct OddValue {
  std::string_view text;
  std::string_view name;
};

constexpr OddValue kValues[] = {
    {"null", "null"},
    {"true", "true"},
    {"false", "false"},
    {"0", "a number"},
    {"-1.5e3", "a number"},
    {"\"\"", "a string"},
    {"\"0\"", "a string"},
    {"\"true\"", "a string"},
    {"\"a\\\"]}\"", "a string"},
    {"[]", "an array"},
    {"[0]", "an array"},
    {"{}", "an object"},
    {R"({"inputChannel":0,"outputChannel":0,"gain":1,"active":true})", "an object"},
};

std::string found(std::string_view wanted, std::string_view name) {
  return "expected " + std::string(wanted) + ", found " + std::string(name);
}

TEST(PatchFileShapeTest, TopLevelIsAnArray) {
  for (const auto& value : kValues) {
    if (value.name == "an array") continue;
    expectError(value.text, "byte 0", found("an array of routes", value.name));
    expectError("\n " + std::string(value.text) + "\n", "byte 2", found("an array of routes", value.name));
  }
}

TEST(PatchFileShapeTest, ElementsAreObjects) {
  const std::string first = onePatch("0", "1", "1.0", "true");
  const std::string begin = first.substr(0, first.size() - 1);
  for (const auto& value : kValues) {
    if (value.name == "an object") continue;
    expectError("[" + std::string(value.text) + "]", "element 0, byte 1", found("an object", value.name));
    expectError(begin + ", " + std::string(value.text) + "]",
                "element 1, byte " + std::to_string(begin.size() + 2), found("an object", value.name));
  }
}

TEST(PatchFileShapeTest, ChannelsAreNumbers) {
  for (const auto& value : kValues) {
    if (value.name == "a number") continue;
    expectError(onePatch(value.text, "1", "1.0", "true"), R"(element 0, member "inputChannel", byte 17)",
                found("an integer", value.name));
    expectError(onePatch("0", value.text, "1.0", "true"), R"(element 0, member "outputChannel", byte 35)",
                found("an integer", value.name));
  }
}

TEST(PatchFileShapeTest, GainIsANumber) {
  for (const auto& value : kValues) {
    if (value.name == "a number") continue;
    expectError(patchWithGain(value.text), R"(element 0, member "gain", byte 44)",
                found("a number", value.name));
  }
}

TEST(PatchFileShapeTest, ActiveIsTrueOrFalse) {
  for (const auto& value : kValues) {
    if (value.text == "true" || value.text == "false") continue;
    expectError(onePatch("0", "1", "1", value.text), R"(element 0, member "active", byte 55)",
                found("true or false", value.name));
  }
}

// Every set of members but the full one: the error names the first missing one in field order.
TEST(PatchFileShapeTest, AllFourMembersAreRequired) {
  constexpr std::array<std::string_view, 4> kNames = {"inputChannel", "outputChannel", "gain", "active"};
  constexpr std::array<std::string_view, 4> kMembers = {R"("inputChannel":0)", R"("outputChannel":1)",
                                                        R"("gain":1.0)", R"("active":true)"};
  for (unsigned chosen = 0; chosen < 15; ++chosen) {
    std::string members;
    std::string_view missing;
    for (std::size_t index = 0; index < kNames.size(); ++index) {
      if ((chosen >> index & 1U) != 0) {
        members.append(members.empty() ? "" : ",").append(kMembers[index]);
      } else if (missing.empty()) {
        missing = kNames[index];
      }
    }
    expectError(" [ {" + members + "}]", "element 0, member \"" + std::string(missing) + "\", byte 3",
                "missing");
  }
}

constexpr BadPatch kNamesThatAreNearlyRight[] = {
    {R"([{"InputChannel":0,"outputChannel":0,"gain":1,"active":true}])",
     R"(element 0, member "inputChannel", byte 1)", "missing"},
    {R"([{"inputChannel ":0,"outputChannel":0,"gain":1,"active":true}])",
     R"(element 0, member "inputChannel", byte 1)", "missing"},
    {R"([{"inputChannel":0,"output_channel":0,"gain":1,"active":true}])",
     R"(element 0, member "outputChannel", byte 1)", "missing"},
    {R"([{"inputChannel":0,"outputChannel":0,"GAIN":1,"active":true}])",
     R"(element 0, member "gain", byte 1)", "missing"},
    {R"([{"inputChannel":0,"outputChannel":0,"gain\u0000":1,"active":true}])",
     R"(element 0, member "gain", byte 1)", "missing"},
    {R"([{"inputChannel":0,"outputChannel":0,"gain\n":1,"active":true}])",
     R"(element 0, member "gain", byte 1)", "missing"},
    {R"([{"inputChannel":0,"outputChannel":0,"gain":1,"":true}])", R"(element 0, member "active", byte 1)",
     "missing"},
    {R"([{"route":{"inputChannel":0,"outputChannel":0,"gain":1,"active":true}}])",
     R"(element 0, member "inputChannel", byte 1)", "missing"},
};

TEST(PatchFileShapeTest, NamesThatAreNearlyRight) {
  expectErrors(kNamesThatAreNearlyRight);
}

constexpr BadPatch kLastOfEqualMembersIsWrong[] = {
    {R"([{"inputChannel":0,"inputChannel":"0","outputChannel":0,"gain":1,"active":true}])",
     R"(element 0, member "inputChannel", byte 34)", "expected an integer, found a string"},
    {R"([{"gain":1,"gain":null,"inputChannel":0,"outputChannel":0,"active":true}])",
     R"(element 0, member "gain", byte 18)", "expected a number, found null"},
    {R"([{"gain":1,"\u0067ain":[1],"inputChannel":0,"outputChannel":0,"active":true}])",
     R"(element 0, member "gain", byte 23)", "expected a number, found an array"},
    {R"([{"active":true,"active":false,"active":1,"inputChannel":0,"outputChannel":0,"gain":1}])",
     R"(element 0, member "active", byte 40)", "expected true or false, found a number"},
};

TEST(PatchFileShapeTest, LastOfEqualMembersIsWrong) {
  expectErrors(kLastOfEqualMembersIsWrong);
}

TEST(PatchFileShapeTest, FirstWrongElementIsNamed) {
  const std::string good = R"({"inputChannel":0,"outputChannel":1,"gain":1.0,"active":true},)";
  std::string text = "[";
  for (int count = 0; count < 1000; ++count) text += good;
  const auto offset = text.size() + 1 + std::string_view(R"("gain":)").size();
  text += R"({"gain":"loud","inputChannel":0,"outputChannel":1,"active":true},)" + good + "{}]";
  expectError(text, "element 1000, member \"gain\", byte " + std::to_string(offset),
              "expected a number, found a string");
}

}  // namespace
}  // namespace tolvane::test
