// Texts that look wrong but are valid patches.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/patch/patch_file.h"
#include "core/patch/patch_text.h"

namespace tolvane::test {
namespace {

constexpr PatchConnection kRoute{4, 5, 0.25F, false};

// A route with these members in front of its own four.
std::string routeAfter(const std::string& members) {
  return "[{" + members + R"("inputChannel":4,"outputChannel":5,"gain":0.25,"active":false}])";
}

void expectOneRoute(const std::string& text) {
  const auto result = decodePatch(text);
  ASSERT_TRUE(result) << testing::PrintToString(text) << ": " << result.error().message();
  EXPECT_EQ(result.value(), std::vector<PatchConnection>{kRoute}) << testing::PrintToString(text);
}

TEST(PatchFileOddButValidTest, UnknownMembersOfAnyShape) {
  for (const auto* value :
       {"null", "true", "false", "0", "-0", "1e308", "-1e-400", "123456789012345678901234567890", "\"\"",
        "\"x\"", "[]", "{}", "[[]]", "[[],[[]],{}]", R"({"a":{"b":[{"c":null}]}})",
        R"([1,"a",{"gain":"x"},[true]])", R"({"inputChannel":"x","gain":null})", R"([{"inputChannel":0}])"}) {
    expectOneRoute(routeAfter(std::string(R"("note":)") + value + ","));
  }
}

TEST(PatchFileOddButValidTest, UnknownMembersWithNumbersOfAnySize) {
  const std::string digits(1000, '9');
  for (const std::string& value :
       {std::string("1e400"), std::string("-1e400"), std::string("1E+99999999999999999999"),
        std::string("[1e400,{\"a\":-1.5e5000}]"), digits, "-" + digits, digits + ".5e400", "0." + digits,
        "1e" + digits, "[" + digits + "," + digits + "]", "{\"1e400\":\"" + digits + "\"}"}) {
    expectOneRoute(routeAfter(R"("note":)" + value + ","));
    expectOneRoute(routeAfter(R"("gain":)" + value + ","));
  }
}

TEST(PatchFileOddButValidTest, UnknownMembersOfAnyName) {
  for (const auto* name : {"", " ", "Gain", "gain ", "GAIN", "gai", "gains", "\\u0000", "gain\\u0000",
                           "\\\"gain\\\"", "\\ud83c\\udfa7", "🎧", "é", "0", "__proto__", "inputchannel"}) {
    expectOneRoute(routeAfter("\"" + std::string(name) + R"(":"x",)"));
  }
}

TEST(PatchFileOddButValidTest, StringsOfEveryEscapeAndEveryLengthOfCharacter) {
  for (const auto* value : {R"(\"\\\/\b\f\n\r\t)",
                            R"(\u0000\u001f\u007F\u00e9\uFFFF)",
                            R"(\uD834\uDD1E)",
                            R"(\ud800\udc00)",
                            R"(\uDBFF\uDFFF)",
                            "\x7F",
                            "\xC2\x80",
                            "\xDF\xBF",
                            "\xE0\xA0\x80",
                            "\xED\x9F\xBF",
                            "\xEE\x80\x80",
                            "\xEF\xBF\xBE",
                            "\xEF\xBF\xBF",
                            "\xEF\xBB\xBF",
                            "\xF0\x90\x80\x80",
                            "\xF4\x8F\xBF\xBF",
                            "\xE2\x80\xA8",
                            "]}",
                            "// no comment",
                            "/* nor this */"}) {
    expectOneRoute(routeAfter(R"("note":")" + std::string(value) + R"(",)"));
  }
}

TEST(PatchFileOddButValidTest, EscapedMemberNames) {
  expectOneRoute(
      R"([{"\u0069nputChannel":4,"outputChanne\u006c":5,"\u0067\u0061\u0069\u006E":0.25,"a\u0063tive":false}])");
}

TEST(PatchFileOddButValidTest, LastOfEqualMembersHolds) {
  expectOneRoute(routeAfter(R"("gain":1,"gain":2,"inputChannel":9,)"));
  expectOneRoute(routeAfter(R"("active":true,"outputChannel":-7,"\u0067ain":3,)"));
}

TEST(PatchFileOddButValidTest, LastOfEqualMembersHoldsThoughAnEarlierOneIsWrong) {
  for (const auto* value :
       {"null", "\"x\"", "true", "1.5", "1e39", "1e300", "[]", "{}", "[{\"gain\":1}]", "[[[]]]"}) {
    for (const auto* name : {"inputChannel", "outputChannel", "gain", "active"}) {
      expectOneRoute(routeAfter("\"" + std::string(name) + "\":" + value + ","));
    }
  }
}

TEST(PatchFileOddButValidTest, WhiteSpaceAnywhereBetweenTokens) {
  std::string text = routeAfter(R"("note":[1,{"a":2}],)");
  std::string spaced = "\r\n";
  bool quoted = false;
  for (std::size_t index = 0; index < text.size(); ++index) {
    spaced += text[index];
    if (text[index] == '"') quoted = !quoted;
    if (!quoted && std::string_view("[]{},:\"").find(text[index]) != std::string_view::npos)
      spaced += " \t\r\n ";
  }
  expectOneRoute(spaced);
}

TEST(PatchFileOddButValidTest, ByteOrderMarkBeforeTheArray) {
  expectOneRoute("\xEF\xBB\xBF" + routeAfter(""));
  expectOneRoute("\xEF\xBB\xBF\n " + routeAfter("") + "\n");
}

TEST(PatchFileOddButValidTest, RoutesTwiceAndFarOutOfRange) {
  const auto result =
      decodePatch(R"([{"inputChannel":-5,"outputChannel":999999,"gain":-1e30,"active":true},)"
                  R"({"inputChannel":-5,"outputChannel":999999,"gain":-1e30,"active":true}])");
  ASSERT_TRUE(result) << result.error().message();
  const PatchConnection route{-5, 999999, -1e30F, true};
  EXPECT_EQ(result.value(), (std::vector<PatchConnection>{route, route}));
}

// The view has no terminator, so the reader must stop at its length.
TEST(PatchFileOddButValidTest, TextThatGoesOnBehindItsView) {
  const std::string text = routeAfter("");
  const std::string longer = text + "}]garbage";
  const auto result = decodePatch(std::string_view(longer).substr(0, text.size()));
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_EQ(result.value(), std::vector<PatchConnection>{kRoute});
}

}  // namespace
}  // namespace tolvane::test
