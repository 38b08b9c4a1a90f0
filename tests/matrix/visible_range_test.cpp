#include "matrix/visible_range.h"

#include <limits>

#include <gtest/gtest.h>

namespace tolvane {
namespace {

void expectRange(const VisibleRange& range, std::int64_t first, std::int64_t last) {
  EXPECT_EQ(range.first, first);
  EXPECT_EQ(range.last, last);
}

TEST(VisibleRange, RunsFromTheFloorToTheCeiling) {
  expectRange(visibleRange(0.0, 32.0, 16.0, 64), 0, 2);
  expectRange(visibleRange(17.0, 33.0, 16.0, 64), 1, 3);
  expectRange(visibleRange(24.0, 24.0, 16.0, 64), 1, 2);
}

TEST(VisibleRange, StaysWithinTheCount) {
  expectRange(visibleRange(-40.0, 1000.0, 16.0, 2), 0, 1);
  EXPECT_TRUE(visibleRange(0.0, 100.0, 16.0, 0).empty());
  EXPECT_TRUE(visibleRange(1000.0, 1100.0, 16.0, 4).empty());
  EXPECT_FALSE(visibleRange(0.0, 0.0, 16.0, 1).empty());
}

TEST(VisibleRangeDeath, WhatFitsNoIntegerIsFatal) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_DEATH(static_cast<void>(visibleRange(0.0, infinity, 16.0, 4)), "fatal");
  EXPECT_DEATH(static_cast<void>(visibleRange(std::numeric_limits<double>::quiet_NaN(), 16.0, 16.0, 4)),
               "fatal");
  EXPECT_DEATH(static_cast<void>(visibleRange(1.0, 16.0, 0.0, 4)), "fatal");
  EXPECT_DEATH(static_cast<void>(visibleRange(0.0, 16.0, 16.0, std::numeric_limits<std::int64_t>::min())),
               "fatal");
  EXPECT_DEATH(static_cast<void>(truncated(9223372036854775808.0)), "fatal");
}

TEST(Truncated, CutsTowardZero) {
  EXPECT_EQ(truncated(-0.9), 0);
  EXPECT_EQ(truncated(-1.0), -1);
  EXPECT_EQ(truncated(1.9), 1);
  EXPECT_EQ(truncated(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
}

}  // namespace
}  // namespace tolvane
