// Patches larger than anybody would write by hand.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/patch/bad_patch.h"
#include "core/patch/patch_text.h"
#include "core/patch/syntax_errors.h"

namespace tolvane::test {
namespace {

constexpr std::size_t kMillion = 1000000;

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  result.reserve(text.size() * count);
  for (std::size_t index = 0; index < count; ++index) result += text;
  return result;
}

std::vector<PatchConnection> millionRoutes() {
  std::vector<PatchConnection> routes(kMillion);
  for (std::size_t index = 0; index < kMillion; ++index) {
    const auto channel = static_cast<std::int64_t>(index);
    routes[index] = {channel, -channel, static_cast<float>(index) / 64.0F, index % 3 == 0};
  }
  return routes;
}

// A route with an unknown member in front. `opening` opens levels in its value, which `closing` closes again.
std::string routeWithNote(const std::string& opening, const std::string& closing) {
  return R"([{"note":)" + opening + closing +
         R"(,"inputChannel":0,"outputChannel":1,"gain":1.0,"active":true}])";
}

void expectTheRoute(const std::string& text) {
  const auto result = decodePatch(text);
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_EQ(result.value(), (std::vector<PatchConnection>{{0, 1, 1.0F, true}}));
}

TEST(LargePatchTest, MillionRoutesAreWrittenAndReadBack) {
  const auto routes = millionRoutes();
  const auto text = encodePatch(routes);
  ASSERT_TRUE(text);
  const auto result = decodePatch(text.value());
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_TRUE(result.value() == routes);
}

TEST(LargePatchTest, OneWrongRouteBehindAMillionGoodOnesFailsThemAll) {
  const std::string good = R"({"inputChannel":0,"outputChannel":1,"gain":1.0,"active":true},)";
  const std::string text = "[" + repeated(good, kMillion) + "{}]";
  expectError(text,
              "element 1000000, member \"inputChannel\", byte " + std::to_string(good.size() * kMillion + 1),
              "missing");
}

TEST(LargePatchTest, MillionElementsThatAreNoRoutes) {
  expectError("[" + repeated("0,", kMillion) + "0]", "element 0, byte 1",
              "expected an object, found a number");
}

TEST(LargePatchTest, MillionUnknownMembersAndValues) {
  expectTheRoute(routeWithNote("0," + repeated("\"note\":1,", kMillion), "\"note\":2"));
  expectTheRoute(routeWithNote("[" + repeated("0,", kMillion), "0]"));
  expectTheRoute(routeWithNote("[" + repeated("[],{},", kMillion), "[]]"));
}

TEST(LargePatchTest, MillionEqualMembersTheLastOfWhichHolds) {
  expectTheRoute(routeWithNote("0," + repeated("\"gain\":\"x\",", kMillion), "\"note\":0"));
}

TEST(LargePatchTest, StringsAndNamesOfTenMillionBytes) {
  const std::string bytes(10 * kMillion, 'x');
  expectTheRoute(routeWithNote("\"" + bytes, "\""));
  expectTheRoute(routeWithNote("0,\"" + bytes, "\":0"));
  expectError("[{\"note\":\"" + bytes, "element 0, byte 10000010", kSyntaxError);
}

TEST(LargePatchTest, TenMillionBytesOfWhiteSpace) {
  const std::string blanks(10 * kMillion, ' ');
  expectTheRoute(blanks + routeWithNote("0", blanks) + blanks);
  expectError(blanks, "byte 10000000", kSyntaxError);
}

TEST(LargePatchTest, UnknownMembersOfAnyDepth) {
  for (const std::size_t levels : {std::size_t{510}, std::size_t{511}, std::size_t{600}, kMillion}) {
    expectTheRoute(routeWithNote(repeated("[", levels), repeated("]", levels)));
    expectTheRoute(routeWithNote(repeated("{\"a\":", levels) + "{", repeated("}", levels + 1)));
    expectTheRoute(routeWithNote(repeated("[{\"a\":", levels) + "0", repeated("}]", levels)));
  }
}

TEST(LargePatchTest, MillionLevelsWhereTheyMustNotBe) {
  expectError(repeated("[", kMillion), "element 0, byte 1", "expected an object, found an array");
  expectError(repeated("{\"a\":", kMillion), "byte 0", "expected an array of routes, found an object");
  const std::string before = R"([{"inputChannel":0,"outputChannel":1,"active":true,"gain":)";
  expectError(before + repeated("[", kMillion) + repeated("]", kMillion) + "}]",
              "element 0, member \"gain\", byte " + std::to_string(before.size()),
              "expected a number, found an array");
}

TEST(LargePatchTest, MillionLevelsThatAreNotClosed) {
  expectError(R"([{"note":)" + repeated("[", kMillion), "element 0, byte 1000009", kSyntaxError);
  expectError(R"([{"note":)" + repeated("[", kMillion) + "}", "element 0, byte 1000009", kSyntaxError);
}

}  // namespace
}  // namespace tolvane::test
