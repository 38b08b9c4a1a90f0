// Lines on standard output.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/routing/trace.h"
#include "support/captured_output.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;

TEST(TraceLine, IsTheTextAndALineFeed) {
  EXPECT_THAT(outputLinesOf([] { traceLine("n=%d s=%s", -7, "Ünïcode ✓"); }),
              ElementsAre("n=-7 s=Ünïcode ✓"));
}

TEST(TraceLine, MayBeEmpty) {
  EXPECT_THAT(outputLinesOf([] { traceLine("%s", ""); }), ElementsAre(""));
}

TEST(TraceLine, Of255BytesIsWhole) {
  const std::string text(255, 'x');
  EXPECT_THAT(outputLinesOf([&] { traceLine("%s", text.c_str()); }), ElementsAre(text));
}

TEST(TraceLine, LongerThan255BytesIsCut) {
  const std::string text(1000, 'x');
  EXPECT_THAT(outputLinesOf([&] { traceLine("%s", text.c_str()); }), ElementsAre(std::string(255, 'x')));
}

}  // namespace
}  // namespace tolvane::test
