#include "ctl/terminal/text_table.h"

#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

TEST(TextTable, AlignsByCharactersNotBytes) {
  TextTable table({{"n", TextTable::Align::right}, {"word"}, {"x"}});
  table.addRow({"1", "äöü", "y"});
  table.addRow({"100", "abcde", ""});
  EXPECT_EQ(table.text(),
            "  n  word   x\n"
            "  1  äöü    y\n"
            "100  abcde\n");
}

TEST(TextTable, ShowsControlCharactersEscapedAndCountsThemSo) {
  TextTable table({{"a"}, {"b"}});
  table.addRow({"x\n\033[2Jy\x7F", "1"});
  EXPECT_EQ(table.text(), "a                b\nx\\n\\x1b[2Jy\\x7f  1\n");
}

}  // namespace
}  // namespace tolvane::ctl
