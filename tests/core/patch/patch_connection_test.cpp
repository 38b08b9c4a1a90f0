#include "core/patch/patch_connection.h"

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

namespace tolvane {
namespace {

using Key = PatchConnection::CodingKeys;

constexpr PatchConnection kRoute{2, 4, 0.5F, true};

TEST(PatchConnectionTest, IsAPlainValueWithItsFieldsInOrder) {
  static_assert(std::is_trivially_copyable_v<PatchConnection>);
  static_assert(std::is_same_v<decltype(PatchConnection::inputChannel), std::int64_t>);
  static_assert(std::is_same_v<decltype(PatchConnection::outputChannel), std::int64_t>);
  static_assert(std::is_same_v<decltype(PatchConnection::gain), float>);
  static_assert(std::is_same_v<decltype(PatchConnection::active), bool>);
  EXPECT_EQ(kRoute.inputChannel, 2);
  EXPECT_EQ(kRoute.outputChannel, 4);
  EXPECT_EQ(kRoute.gain, 0.5F);
  EXPECT_TRUE(kRoute.active);
}

TEST(PatchConnectionTest, EqualsACopyOfItself) {
  const PatchConnection copy = kRoute;
  EXPECT_TRUE(copy == kRoute);
  EXPECT_FALSE(copy != kRoute);
}

TEST(PatchConnectionTest, DiffersWhenAnyOneFieldDiffers) {
  EXPECT_NE(kRoute, (PatchConnection{3, 4, 0.5F, true}));
  EXPECT_NE(kRoute, (PatchConnection{2, 5, 0.5F, true}));
  EXPECT_NE(kRoute, (PatchConnection{2, 4, std::nextafter(0.5F, 1.0F), true}));
  EXPECT_NE(kRoute, (PatchConnection{2, 4, 0.5F, false}));
}

TEST(PatchConnectionTest, ComparesAllSixtyFourBitsOfAChannel) {
  EXPECT_NE((PatchConnection{1, 4, 1.0F, true}),
            (PatchConnection{1 + (std::int64_t{1} << 32), 4, 1.0F, true}));
  EXPECT_NE((PatchConnection{0, std::numeric_limits<std::int64_t>::min(), 1.0F, true}),
            (PatchConnection{0, std::numeric_limits<std::int64_t>::max(), 1.0F, true}));
}

TEST(PatchConnectionTest, NotANumberGainEqualsNoRouteNotEvenItself) {
  const PatchConnection route{0, 1, std::numeric_limits<float>::quiet_NaN(), true};
  EXPECT_FALSE(route == route);
  EXPECT_TRUE(route != route);
  EXPECT_FALSE(route == (PatchConnection{0, 1, 1.0F, true}));
}

TEST(PatchConnectionTest, ZeroGainsOfEitherSignAreEqual) {
  EXPECT_EQ((PatchConnection{0, 1, 0.0F, true}), (PatchConnection{0, 1, -0.0F, true}));
}

TEST(PatchConnectionTest, InfiniteGainsCompareAsNumbers) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ((PatchConnection{0, 1, kInfinity, true}), (PatchConnection{0, 1, kInfinity, true}));
  EXPECT_NE((PatchConnection{0, 1, kInfinity, true}), (PatchConnection{0, 1, -kInfinity, true}));
}

TEST(PatchConnectionTest, KeepsChannelsOfAnyValue) {
  const PatchConnection route{-1, std::numeric_limits<std::int64_t>::max(), 1.0F, true};
  EXPECT_EQ(route.inputChannel, -1);
  EXPECT_EQ(route.outputChannel, std::numeric_limits<std::int64_t>::max());
}

TEST(PatchConnectionCodingKeysTest, TextsAreTheFieldNames) {
  EXPECT_EQ(stringValue(Key::inputChannel), "inputChannel");
  EXPECT_EQ(stringValue(Key::outputChannel), "outputChannel");
  EXPECT_EQ(stringValue(Key::gain), "gain");
  EXPECT_EQ(stringValue(Key::active), "active");
}

TEST(PatchConnectionCodingKeysTest, AreMadeFromTheirExactTexts) {
  EXPECT_EQ(codingKey("inputChannel"), Key::inputChannel);
  EXPECT_EQ(codingKey("outputChannel"), Key::outputChannel);
  EXPECT_EQ(codingKey("gain"), Key::gain);
  EXPECT_EQ(codingKey("active"), Key::active);
}

TEST(PatchConnectionCodingKeysTest, AreMadeFromNoOtherText) {
  using namespace std::string_view_literals;
  for (const auto text : {""sv, "Gain"sv, "GAIN"sv, "gain "sv, " gain"sv, "gai"sv, "gains"sv, "gain\0"sv,
                          "inputchannel"sv, "input_channel"sv, "InputChannel"sv, "0"sv, "1"sv, "gaın"sv}) {
    EXPECT_EQ(codingKey(text), std::nullopt) << text;
  }
}

TEST(PatchConnectionCodingKeysTest, HaveNoIntegerForm) {
  for (const auto key : {Key::inputChannel, Key::outputChannel, Key::gain, Key::active}) {
    EXPECT_EQ(intValue(key), std::nullopt);
  }
  for (const std::int64_t value : {std::int64_t{-1}, std::int64_t{0}, std::int64_t{1}, std::int64_t{2},
                                   std::int64_t{3}, std::numeric_limits<std::int64_t>::max()}) {
    EXPECT_EQ(codingKey(value), std::nullopt) << value;
  }
}

}  // namespace
}  // namespace tolvane
