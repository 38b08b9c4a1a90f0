#include "app/entry_parsing.h"

#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include <gtest/gtest.h>

namespace tolvane {
namespace {

using Integer = std::optional<std::int64_t>;

TEST(ParseInteger, TakesDigitsWithAtMostOneSign) {
  EXPECT_EQ(parseInteger("1"), Integer(1));
  EXPECT_EQ(parseInteger("+2"), Integer(2));
  EXPECT_EQ(parseInteger("-3"), Integer(-3));
  EXPECT_EQ(parseInteger("0"), Integer(0));
  EXPECT_EQ(parseInteger("-0"), Integer(0));
  EXPECT_EQ(parseInteger("007"), Integer(7));
  EXPECT_EQ(parseInteger("+0099"), Integer(99));
}

TEST(ParseInteger, RefusesEverythingElse) {
  for (const char* const text :
       {"",   "+",   "-",    "++1",   "--1",   "+-1", "-+1", " 2", "2 ",  "\t2", "2\n", "2.0",
        "2.", "1e3", "0x10", "1,000", "1_000", "abc", "1a",  "a1", "- 1", "٣",   "２"}) {
    EXPECT_EQ(parseInteger(text), Integer()) << '"' << text << '"';
  }
}

TEST(ParseInteger, RefusesAnEmbeddedNul) {
  EXPECT_EQ(parseInteger(std::string_view("1\0", 2)), Integer());
  EXPECT_EQ(parseInteger(std::string_view("1\0002", 3)), Integer());
  EXPECT_EQ(parseInteger(std::string_view("\0001", 2)), Integer());
}

TEST(ParseInteger, KeepsTo64Bits) {
  EXPECT_EQ(parseInteger("9223372036854775807"), Integer(std::numeric_limits<std::int64_t>::max()));
  EXPECT_EQ(parseInteger("+9223372036854775807"), Integer(std::numeric_limits<std::int64_t>::max()));
  EXPECT_EQ(parseInteger("-9223372036854775808"), Integer(std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(parseInteger("0000000000000000000000000000001"), Integer(1));
  EXPECT_EQ(parseInteger("9223372036854775808"), Integer());
  EXPECT_EQ(parseInteger("-9223372036854775809"), Integer());
  EXPECT_EQ(parseInteger("99999999999999999999999999"), Integer());
}

using Gain = std::optional<float>;

TEST(ParseGain, TakesWhatTheCLibraryTakes) {
  EXPECT_EQ(parseGain("1.0"), Gain(1.0F));
  EXPECT_EQ(parseGain("0.5"), Gain(0.5F));
  EXPECT_EQ(parseGain(".5"), Gain(0.5F));
  EXPECT_EQ(parseGain("5."), Gain(5.0F));
  EXPECT_EQ(parseGain("-1"), Gain(-1.0F));
  EXPECT_EQ(parseGain("+2"), Gain(2.0F));
  EXPECT_EQ(parseGain("1e-3"), Gain(1e-3F));
  EXPECT_EQ(parseGain("2.5E2"), Gain(250.0F));
  EXPECT_EQ(parseGain("0x1.8p1"), Gain(3.0F));
  EXPECT_EQ(parseGain("16777217"), Gain(16777216.0F));  // the nearest float
  EXPECT_EQ(parseGain("3.4028235e38"), Gain(FLT_MAX));
}

TEST(ParseGain, TakesInfinityAndNotANumber) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(parseGain("inf"), Gain(kInfinity));
  EXPECT_EQ(parseGain("-INF"), Gain(-kInfinity));
  EXPECT_EQ(parseGain("Infinity"), Gain(kInfinity));
  EXPECT_EQ(parseGain("1e400"), Gain(kInfinity));
  EXPECT_TRUE(std::isnan(parseGain("nan").value()));
  EXPECT_TRUE(std::isnan(parseGain("-NaN").value()));
  EXPECT_TRUE(std::isnan(parseGain("nan(1)").value()));
  EXPECT_EQ(parseGain("1e-400"), Gain(0.0F));
}

TEST(ParseGain, RefusesWhatIsNotWhollyANumber) {
  for (const char* const text : {"", "abc", "1,5", "1.5 ", "1.5x", "0.5.5", "--1", "+-1", "1e", "infinite",
                                 ".", "-", "nan(", "0x", "½"}) {
    EXPECT_EQ(parseGain(text), Gain()) << '"' << text << '"';
  }
  EXPECT_EQ(parseGain(std::string("1\0", 2)), Gain());
  EXPECT_EQ(parseGain(std::string("\0001", 2)), Gain());
}

TEST(ParseGain, RefusesEveryLeadingWhiteSpace) {
  for (const char blank : {' ', '\t', '\n', '\v', '\f', '\r'}) {
    EXPECT_EQ(parseGain(std::string(1, blank) + "1.0"), Gain()) << static_cast<int>(blank);
  }
}

TEST(FormatGain, WritesTwoDecimalsAsTheCLibraryDoes) {
  EXPECT_EQ(formatGain(1.0F), "1.00");
  EXPECT_EQ(formatGain(0.5F), "0.50");
  EXPECT_EQ(formatGain(-1.0F), "-1.00");
  EXPECT_EQ(formatGain(2.0F), "2.00");
  EXPECT_EQ(formatGain(-0.0F), "-0.00");
  EXPECT_EQ(formatGain(0.125F), "0.12");  // an exact half rounds to even
  EXPECT_EQ(formatGain(0.375F), "0.38");
  EXPECT_EQ(formatGain(0.005F), "0.00");  // slightly below 0.005
  EXPECT_EQ(formatGain(1234.567F), "1234.57");
  EXPECT_EQ(formatGain(FLT_MAX), "340282346638528859811704183484516925440.00");
  EXPECT_EQ(formatGain(std::numeric_limits<float>::infinity()), "inf");
  EXPECT_EQ(formatGain(-std::numeric_limits<float>::infinity()), "-inf");
  EXPECT_EQ(formatGain(std::numeric_limits<float>::quiet_NaN()), "nan");
}

TEST(Numbers, DoNotFollowACommaLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  setenv("LOCPATH", TOLVANE_TEST_LOCALES, 1);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  EXPECT_EQ(parseGain("0.5"), Gain(0.5F));
  EXPECT_EQ(parseGain("0,5"), Gain());
  EXPECT_EQ(formatGain(0.5F), "0.50");
  std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace tolvane
