// Which numbers are channels and gains, and which value each has.
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "core/patch/bad_patch.h"
#include "core/patch/patch_text.h"

namespace tolvane::test {
namespace {

constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kSmallest = std::numeric_limits<float>::denorm_min();

struct Channel {
  std::string_view text;
  std::int64_t value;
};

constexpr Channel kChannels[] = {
    {"0", 0},
    {"-0", 0},
    {"-1", -1},
    {"1.0", 1},
    {"-1.000", -1},
    {"0.0", 0},
    {"-0.0e5", 0},
    {"1e3", 1000},
    {"1E3", 1000},
    {"1e+3", 1000},
    {"1.5e1", 15},
    {"120e-1", 12},
    {"1000000e-6", 1},
    {"0.00012e5", 12},
    {"0e99999999999999999999", 0},
    {"0e-99999999999999999999", 0},
    {"0.0e400", 0},
    {"16777217.0", 16777217},
    {"9007199254740993", 9007199254740993},
    {"9007199254740993.0", 9007199254740993},
    {"-9007199254740993.00e0", -9007199254740993},
    {"9223372036854775807", kMax},
    {"9223372036854775807.0", kMax},
    {"9.223372036854775807e18", kMax},
    {"92233720368547758070e-1", kMax},
    {"-9223372036854775808", kMin},
    {"-9223372036854775808.0", kMin},
    {"-9.223372036854775808E+18", kMin},
    {"1e18", 1000000000000000000},
};

TEST(PatchFileNumberTest, ChannelIsTheExactInteger) {
  for (const auto& channel : kChannels) {
    const auto input = decodePatch(patchWithInput(channel.text));
    ASSERT_TRUE(input) << channel.text << ": " << input.error().message();
    EXPECT_EQ(input.value().at(0).inputChannel, channel.value) << channel.text;
    const auto output = decodePatch(onePatch("7", channel.text, "1", "true"));
    ASSERT_TRUE(output) << channel.text << ": " << output.error().message();
    EXPECT_EQ(output.value().at(0).outputChannel, channel.value) << channel.text;
  }
}

TEST(PatchFileNumberTest, ChannelHasNoFraction) {
  for (const auto* text :
       {"1.5", "-0.5", "1e-1", "0.1", "1e-400", "-1e-99999999999999999999", "1.0000000000000000001",
        "9007199254740993.5", "9223372036854775807.5", "15e-2", "1234.5e0"}) {
    expectError(patchWithInput(text), R"(element 0, member "inputChannel", byte 17)",
                "expected an integer, found a number with a fraction");
  }
}

TEST(PatchFileNumberTest, ChannelFitsSixtyFourBits) {
  for (const auto* text : {"9223372036854775808", "9223372036854775808.0", "-9223372036854775809", "1e19",
                           "-1e19", "18446744073709551615", "18446744073709551616", "1e20", "1e300",
                           "1.7e308", "100000000000000000000000000000000000000000000000000", "9.3e18"}) {
    expectError(patchWithInput(text), R"(element 0, member "inputChannel", byte 17)",
                "integer out of range for 64 bits");
  }
}

struct Gain {
  std::string_view text;
  float value;
};

constexpr Gain kGains[] = {
    {"1", 1.0F},
    {"1.0", 1.0F},
    {"0", 0.0F},
    {"-0", -0.0F},
    {"-0.0", -0.0F},
    {"-0e5", -0.0F},
    {"0.1", 0.1F},
    {"-2.5", -2.5F},
    {"1e0", 1.0F},
    {"10E-1", 1.0F},
    {"0.70710678", 0.70710678F},
    {"0.707106781186547524400844362104849039", 0.70710678F},
    {"16777217", 16777216.0F},
    {"16777217.0", 16777216.0F},
    {"16777219", 16777220.0F},
    {"18446744073709551615", 18446744073709551616.0F},
    {"18446744073709551616", 18446744073709551616.0F},
    {"-9223372036854775808", -9223372036854775808.0F},
    {"3.4028234663852886e38", kLargest},
    {"3.4028235e38", kLargest},
    {"-3.4028235e+38", -kLargest},
    {"340282346638528859811704183484516925440", kLargest},
    {"3.402823567797336e38", kLargest},
    {"1.17549435e-38", std::numeric_limits<float>::min()},
    {"1e-45", kSmallest},
    {"-1.4e-45", -kSmallest},
    {"7.1e-46", kSmallest},
    {"7e-46", 0.0F},
    {"-1e-50", -0.0F},
    {"1e-400", 0.0F},
    {"-1e-99999999999999999999", -0.0F},
    {"1.00000000000000000000000000000000000000000000000000", 1.0F},
    // Nearer to one float than to the next, but midway between them once rounded to double.
    {"7.038531e-26", 0x1.5c87fap-84F},
    {"1.00000017881393432617187499", 0x1.000002p0F},
    {"1.00000017881393432617187501", 0x1.000004p0F},
    {"3.4028235677973366e38", kLargest},
};

TEST(PatchFileNumberTest, GainIsTheNearestFloat) {
  for (const auto& gain : kGains) {
    const auto result = decodePatch(patchWithGain(gain.text));
    ASSERT_TRUE(result) << gain.text << ": " << result.error().message();
    EXPECT_EQ(result.value().at(0).gain, gain.value) << gain.text;
    EXPECT_EQ(std::signbit(result.value().at(0).gain), std::signbit(gain.value)) << gain.text;
  }
}

TEST(PatchFileNumberTest, GainFitsAFloat) {
  for (const auto* text : {"3.4028236e38", "-3.4028236e38", "3.4028235677973367e38", "1e39", "-1e39", "1e308",
                           "340282366920938463463374607431768211456"}) {
    expectError(patchWithGain(text), R"(element 0, member "gain", byte 44)",
                "number out of range for a 32-bit float");
  }
}

TEST(PatchFileNumberTest, NumbersOfAHundredThousandDigitsAreReadExactly) {
  const std::string zeros(100000, '0');
  const auto result = decodePatch(
      onePatch("1" + zeros + "e-100000", "0." + zeros + "2e100001", "0." + zeros + "5e100000", "true"));
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_EQ(result.value().at(0), (PatchConnection{1, 2, 0.5F, true}));
}

}  // namespace
}  // namespace tolvane::test
