// The order of names with numbers in them.
#include "hal/support/natural_order.h"

#include <cstddef>
#include <iterator>

#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

using hal::naturallyLess;

TEST(NaturalOrder, IsThatOfTheseNames) {
  const char* const ordered[] = {"",
                                 "0",
                                 "00",
                                 "01",
                                 "1",
                                 "2",
                                 "9",
                                 "0010",
                                 "10",
                                 "11a",
                                 "99999999999999999999",
                                 "100000000000000000000",
                                 "a",
                                 "a-2.1",
                                 "a-2.9",
                                 "a-10",
                                 "a-10b",
                                 "a-10b2",
                                 "b"};
  for (std::size_t a = 0; a < std::size(ordered); ++a) {
    for (std::size_t b = 0; b < std::size(ordered); ++b) {
      EXPECT_EQ(naturallyLess(ordered[a], ordered[b]), a < b) << ordered[a] << " and " << ordered[b];
    }
  }
}

TEST(NaturalOrder, TakesBytesAsTheyAre) {
  EXPECT_FALSE(naturallyLess("\xC3\xA4", "\xC3\xA4"));
  EXPECT_NE(naturallyLess("\xFF", "1"), naturallyLess("1", "\xFF"));
}

}  // namespace
}  // namespace tolvane::test
