#include "ctl/terminal/decimal.h"

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

TEST(Decimal, ShortestFormThatReadsBack) {
  EXPECT_EQ(shortestDecimal(1.0F), "1.0");
  EXPECT_EQ(shortestDecimal(0.1F), "0.1");
  EXPECT_EQ(shortestDecimal(-0.0F), "-0.0");
  EXPECT_EQ(shortestDecimal(16777216.0F), "16777216.0");
  EXPECT_EQ(shortestDecimal(1e-7F), "1e-07");
  EXPECT_EQ(shortestDecimal(std::numeric_limits<float>::infinity()), "inf");
  EXPECT_EQ(shortestDecimal(-std::numeric_limits<float>::infinity()), "-inf");
  EXPECT_EQ(shortestDecimal(NAN), "nan");
}

TEST(Decimal, EveryFiniteFloatReadsBack) {
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    const float value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (!std::isfinite(value)) continue;
    ASSERT_EQ(std::strtof(shortestDecimal(value).c_str(), nullptr), value);
  }
}

TEST(Decimal, Decibels) {
  EXPECT_EQ(decibels(1.0F), "0.0");
  EXPECT_EQ(decibels(0.9999999F), "0.0");
  EXPECT_EQ(decibels(0.5F), "-6.0");
  EXPECT_EQ(decibels(-2.0F), "6.0");
  EXPECT_EQ(decibels(0.12589254F), "-18.0");
  EXPECT_EQ(decibels(0.0F), "-inf");
  EXPECT_EQ(decibels(std::numeric_limits<float>::infinity()), "inf");
  EXPECT_EQ(decibels(NAN), "nan");
}

TEST(Decimal, PlainRates) {
  EXPECT_EQ(plainDecimal(48000.0), "48000");
  EXPECT_EQ(plainDecimal(44100.5), "44100.5");
  EXPECT_EQ(plainDecimal(768000.0), "768000");
}

}  // namespace
}  // namespace tolvane::ctl
