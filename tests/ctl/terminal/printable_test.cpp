#include "ctl/terminal/printable.h"

#include <gtest/gtest.h>

#include "ctl/terminal/json_text.h"
#include "ctl/terminal/messages.h"
#include "nlohmann/json.hpp"

namespace tolvane::ctl {
namespace {

TEST(Printable, LeavesTextAsItIs) {
  for (const char* const text :
       {"", "Stage Box", "a\\b\"c'", "Bühne – 舞台 🎛", "\xC2\xA0", "\xF4\x8F\xBF\xBF"})
    EXPECT_EQ(printable(text), text);
}

TEST(Printable, EscapesControlCharacters) {
  EXPECT_EQ(printable("a\nb\rc\td"), R"(a\nb\rc\td)");
  EXPECT_EQ(printable(std::string_view("\0\a\033[2J\x1F\x7F", 8)), R"(\x00\x07\x1b[2J\x1f\x7f)");
  EXPECT_EQ(printable("\xC2\x80 \xC2\x9B"
                      "2J \xC2\x9F"),
            R"(\u0080 \u009b2J \u009f)");
}

TEST(Printable, EscapesBytesThatAreNotUtf8) {
  EXPECT_EQ(printable("B\xFChne"), R"(B\xfchne)");
  EXPECT_EQ(printable("\x9B"
                      "2J\x80"),
            R"(\x9b2J\x80)");
  EXPECT_EQ(printable("\xC2"), R"(\xc2)");
  EXPECT_EQ(printable("\xC2\033"), R"(\xc2\x1b)");
  EXPECT_EQ(printable("\xE2\x82"), R"(\xe2\x82)");
  EXPECT_EQ(printable("\xC0\x9B\xC1\x9B"), R"(\xc0\x9b\xc1\x9b)");
  EXPECT_EQ(printable("\xE0\x82\x9B"), R"(\xe0\x82\x9b)");
  EXPECT_EQ(printable("\xF0\x80\x82\x9B"), R"(\xf0\x80\x82\x9b)");
  EXPECT_EQ(printable("\xED\xA0\x80"), R"(\xed\xa0\x80)");
  EXPECT_EQ(printable("\xF4\x90\x80\x80\xF5"), R"(\xf4\x90\x80\x80\xf5)");
}

TEST(Printable, LeavesWhatItGaveAsItIs) {
  std::string every;
  for (int byte = 0; byte < 256; ++byte) every += static_cast<char>(byte);
  EXPECT_EQ(printable(printable(every)), printable(every));
}

TEST(Printable, LinesStayLines) {
  EXPECT_EQ(printableLines("a\nb\033\n\nc\r"), "a\nb\\x1b\n\nc\\r");
  EXPECT_EQ(printableLines("a\n"), "a\n");
}

TEST(Printable, NamesHeadTexts) {
  EXPECT_EQ(about("a\nb", "is gone"), R"(a\nb: is gone)");
}

TEST(Printable, TheMetersMessageIsToo) {
  MessageLog messages;
  messages.holdBack();
  messages.say("a\033[2J");
  EXPECT_EQ(messages.latest(), R"(a\x1b[2J)");
}

TEST(JsonText, EscapesEveryControlCharacter) {
  EXPECT_EQ(jsonText({{"ü\033\n", "\x7F\xC2\x80\xC2\x9B\xC2\xA0\xFF"}}, -1),
            "{\"ü\\u001b\\n\":\"\\u007f\\u0080\\u009b\xC2\xA0\xEF\xBF\xBD\"}\n");
  const nlohmann::ordered_json json = {"\x7F\xC2\x9B"};
  EXPECT_EQ(nlohmann::ordered_json::parse(jsonText(json, 2)), json);
}

}  // namespace
}  // namespace tolvane::ctl
