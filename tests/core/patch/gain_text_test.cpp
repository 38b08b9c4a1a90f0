// The text of a gain: short, and the same float when it is read back.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/patch/patch_file.h"
#include "core/patch/patch_text.h"

namespace tolvane::test {
namespace {

std::string gainTextOf(float gain) {
  const std::vector<PatchConnection> routes{{0, 1, gain, true}};
  const auto text = encodePatch(routes);
  if (!text) return "error: " + text.error().message();
  constexpr std::string_view kBefore = R"([{"inputChannel":0,"outputChannel":1,"gain":)";
  constexpr std::string_view kAfter = R"(,"active":true}])";
  return text.value().substr(kBefore.size(), text.value().size() - kBefore.size() - kAfter.size());
}

struct GainText {
  float gain;
  std::string_view text;
};

constexpr GainText kTexts[] = {
    {1.0F, "1.0"},
    {0.0F, "0.0"},
    {-0.0F, "-0.0"},
    {0.1F, "0.1"},
    {0.5F, "0.5"},
    {-2.0F, "-2.0"},
    {0.25F, "0.25"},
    {1.0F / 3.0F, "0.33333334"},
    {0.70710678F, "0.70710677"},
    {100.0F, "100.0"},
    {16777216.0F, "1.6777216e+07"},
    {33554448.0F, "3.355445e+07"},
    {std::numeric_limits<float>::max(), "3.4028235e+38"},
    {std::numeric_limits<float>::lowest(), "-3.4028235e+38"},
    {std::numeric_limits<float>::min(), "1.1754944e-38"},
    {std::numeric_limits<float>::denorm_min(), "1e-45"},
    {-std::numeric_limits<float>::denorm_min(), "-1e-45"},
    // Its shortest text, 7.038531e-26, is so near the middle of two floats that rounding to double first
    // gives the other one.
    {0x1.5c87fap-84F, "7.0385307e-26"},
    {-0x1.5c87fap-84F, "-7.0385307e-26"},
};

TEST(PatchFileGainTextTest, IsTheShortestForm) {
  for (const auto& [gain, text] : kTexts) EXPECT_EQ(gainTextOf(gain), text);
}

int digitCount(std::string text) {
  text.resize(std::min(text.find('e'), text.size()));
  std::erase_if(text, [](char byte) { return byte < '0' || byte > '9'; });
  text.erase(0, text.find_first_not_of('0'));
  return static_cast<int>(text.find_last_not_of('0') + 1);
}

// True if a text of so many digits reads back as the gain, both as a float and by way of double.
bool readsBackWith(int digits, float gain) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*e", digits - 1, static_cast<double>(gain));
  return std::strtof(text, nullptr) == gain && static_cast<float>(std::strtod(text, nullptr)) == gain;
}

std::vector<float> sampleGains() {
  std::vector<float> gains;
  constexpr std::uint32_t kMantissas[] = {0,        1,        2,        0x2AAAAA, 0x3FFFFF,
                                          0x400000, 0x555555, 0x7FFFFE, 0x7FFFFF};
  for (std::uint32_t exponent = 0; exponent < 255; ++exponent) {
    for (const auto mantissa : kMantissas) gains.push_back(std::bit_cast<float>(exponent << 23U | mantissa));
  }
  for (std::uint32_t denormal = 1; denormal < 2000; ++denormal)
    gains.push_back(std::bit_cast<float>(denormal));
  for (int step = 0; step <= 2000; ++step) gains.push_back(static_cast<float>(step) / 1000.0F);
  std::mt19937 random(20240229);
  while (gains.size() < 60000) {
    const auto gain = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (std::isfinite(gain)) gains.push_back(gain);
  }
  return gains;
}

TEST(PatchFileGainTextTest, EveryExponentAndRandomBitPatternsReadBackBitForBit) {
  std::vector<PatchConnection> routes;
  for (const float gain : sampleGains()) {
    routes.push_back({0, 0, gain, true});
    routes.push_back({0, 0, -gain, false});
  }
  const auto text = encodePatch(routes);
  ASSERT_TRUE(text) << text.error().message();
  const auto result = decodePatch(text.value());
  ASSERT_TRUE(result) << result.error().message();
  ASSERT_EQ(result.value().size(), routes.size());
  for (std::size_t index = 0; index < routes.size(); ++index) {
    ASSERT_EQ(std::bit_cast<std::uint32_t>(result.value()[index].gain),
              std::bit_cast<std::uint32_t>(routes[index].gain))
        << gainTextOf(routes[index].gain);
  }
}

TEST(PatchFileGainTextTest, NoSampleCouldBeWrittenWithADigitLess) {
  for (const float gain : sampleGains()) {
    if (gain == 0) continue;
    const int digits = digitCount(gainTextOf(gain));
    ASSERT_LE(digits, std::numeric_limits<float>::max_digits10) << gainTextOf(gain);
    ASSERT_TRUE(digits == 1 || !readsBackWith(digits - 1, gain)) << gainTextOf(gain);
  }
}

}  // namespace
}  // namespace tolvane::test
