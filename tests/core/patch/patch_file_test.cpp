// What a patch file is, as the user of the two coding functions sees it.
#include "core/patch/patch_file.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "core/patch/patch_text.h"

namespace tolvane {
namespace {

using Routes = std::vector<PatchConnection>;

std::string encoded(const Routes& routes) {
  const auto result = encodePatch(routes);
  return result ? result.value() : "error: " + result.error().message();
}

std::string errorOf(std::string_view text) {
  const auto result = decodePatch(text);
  return result ? "no error" : result.error().message();
}

TEST(PatchFileTest, WritesTwoStereoRoutesCompactlyWithMembersInFieldOrder) {
  EXPECT_EQ(encoded({{0, 0, 1.0F, true}, {1, 1, 1.0F, true}}),
            R"([{"inputChannel":0,"outputChannel":0,"gain":1.0,"active":true},)"
            R"({"inputChannel":1,"outputChannel":1,"gain":1.0,"active":true}])");
}

TEST(PatchFileTest, WritesAnEmptyArrayForNoRoutes) {
  EXPECT_EQ(encoded({}), "[]");
}

TEST(PatchFileTest, ReadsAnEmptyArrayAsNoRoutes) {
  for (const auto* text : {"[]", " [ ] ", "\n[\r\n\t]\n"}) {
    const auto result = decodePatch(text);
    ASSERT_TRUE(result) << result.error().message();
    EXPECT_EQ(result.value(), Routes{});
  }
}

TEST(PatchFileTest, KeepsAnInactiveRoute) {
  const Routes routes{{0, 1, 0.5F, false}, {1, 0, 1.0F, true}};
  EXPECT_EQ(encoded(routes), R"([{"inputChannel":0,"outputChannel":1,"gain":0.5,"active":false},)"
                             R"({"inputChannel":1,"outputChannel":0,"gain":1.0,"active":true}])");
  const auto result = decodePatch(encoded(routes));
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_EQ(result.value(), routes);
}

TEST(PatchFileTest, ReadsBackAnEqualListInTheSameOrderWithDuplicates) {
  constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
  constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
  const Routes routes{{5, 3, 0.1F, true},     {0, 0, 1.0F, true}, {5, 3, 0.1F, true},
                      {-1, 99, -2.5F, false}, {kMin, kMax, 0, 1}, {kMax, kMin, 1e-45F, true}};
  const auto result = decodePatch(encoded(routes));
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_EQ(result.value(), routes);
}

TEST(PatchFileTest, ElementWithoutAMemberFailsTheWholeFile) {
  const std::string good = R"({"inputChannel":0,"outputChannel":1,"gain":1.0,"active":true},)";
  EXPECT_EQ(errorOf("[" + good + R"({"inputChannel":0,"outputChannel":1,"active":true}])"),
            "element 1, member \"gain\", byte 63: missing");
  EXPECT_EQ(errorOf("[" + good + R"({"inputChannel":0,"outputChannel":1,"gain":1.0}])"),
            "element 1, member \"active\", byte 63: missing");
  EXPECT_EQ(errorOf("[" + good + R"({"outputChannel":1,"gain":1.0,"active":true}])"),
            "element 1, member \"inputChannel\", byte 63: missing");
  EXPECT_EQ(errorOf("[" + good + R"({"inputChannel":1,"gain":1.0,"active":true}])"),
            "element 1, member \"outputChannel\", byte 63: missing");
}

TEST(PatchFileTest, AdditionalMemberIsIgnoredAndLostOnTheNextSave) {
  const auto result = decodePatch(
      R"([{"comment":"left","inputChannel":0,"outputChannel":1,"gain":1.0,"active":true,"tags":[{"a":[1]}]}])");
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_EQ(result.value(), (Routes{{0, 1, 1.0F, true}}));
  EXPECT_EQ(encoded(result.value()), R"([{"inputChannel":0,"outputChannel":1,"gain":1.0,"active":true}])");
}

TEST(PatchFileTest, NegativeChannelIsKept) {
  const auto result = decodePatch(test::patchWithInput("-1"));
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_EQ(result.value(), (Routes{{-1, 1, 1.0F, true}}));
}

TEST(PatchFileTest, ReadsMembersInAnyOrderWithAnyWhiteSpace) {
  const auto result = decodePatch(
      "\t[\r\n { \"active\" : false ,\n\"gain\":\t2 , \"outputChannel\" :7,\"inputChannel\": 6 } ]\n\n");
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_EQ(result.value(), (Routes{{6, 7, 2.0F, false}}));
}

TEST(PatchFileTest, GainThatIsNotFiniteCannotBeWritten) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const float gain : {std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity}) {
    const auto result = encodePatch(Routes{{0, 0, 1.0F, true}, {1, 1, gain, false}});
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().element, 1U);
    EXPECT_EQ(result.error().member, "gain");
    EXPECT_EQ(result.error().byteOffset, std::nullopt);
    EXPECT_EQ(result.error().message(),
              "element 1, member \"gain\": a gain that is not finite cannot be written");
  }
}

TEST(PatchFileErrorTest, MessageNamesWhatIsKnownAndNothingElse) {
  EXPECT_EQ((PatchFileError{"why", std::nullopt, "", std::nullopt}.message()), "why");
  EXPECT_EQ((PatchFileError{"why", std::nullopt, "", 0}.message()), "byte 0: why");
  EXPECT_EQ((PatchFileError{"why", 0, "", std::nullopt}.message()), "element 0: why");
  EXPECT_EQ((PatchFileError{"why", 3, "gain", 57}.message()), "element 3, member \"gain\", byte 57: why");
}

}  // namespace
}  // namespace tolvane
