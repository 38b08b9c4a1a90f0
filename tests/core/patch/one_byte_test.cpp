// A good patch file with one byte cut off, changed, removed or inserted. The result is an error, or the same
// list that a plain reading of the JSON document gives.
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "core/patch/bad_patch.h"
#include "core/patch/patch_file.h"

namespace tolvane::test {
namespace {

using nlohmann::json;
using Routes = std::vector<PatchConnection>;

constexpr std::string_view kGolden =
    "[ {\"inputChannel\":0,\"outputChannel\":17,\"gain\":1.0,\"active\":true},\n"
    "  {\"note\":\"L\xC3\xA9 \\u00e9\\n\",\"active\":false,\"gain\":-2.5e-1,\"outputChannel\":1e1,"
    "\"inputChannel\":-3,\"tags\":[null,{\"a\":1}]},\n"
    "  {\"inputChannel\":20.0,\"outputChannel\":4,\"gain\":3,\"gain\":0.1,\"active\":true}]";

std::optional<std::int64_t> plainInteger(const json& value) {
  if (value.is_number_unsigned() && value.get<std::uint64_t>() > INT64_MAX) return std::nullopt;
  if (value.is_number_integer()) return value.get<std::int64_t>();
  if (!value.is_number_float()) return std::nullopt;
  const auto number = value.get<double>();
  if (number != std::floor(number) || std::fabs(number) >= 0x1p63) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

std::optional<PatchConnection> plainRoute(const json& object) {
  if (!object.is_object()) return std::nullopt;
  for (const auto* name : {"inputChannel", "outputChannel", "gain", "active"}) {
    if (!object.contains(name)) return std::nullopt;
  }
  const auto input = plainInteger(object["inputChannel"]);
  const auto output = plainInteger(object["outputChannel"]);
  if (!input || !output || !object["gain"].is_number() || !object["active"].is_boolean()) return std::nullopt;
  const auto gain = static_cast<float>(object["gain"].get<double>());
  if (!std::isfinite(gain)) return std::nullopt;
  return PatchConnection{*input, *output, gain, object["active"].get<bool>()};
}

// Reads the patch by way of a whole document in memory, for comparison.
std::optional<Routes> plainPatch(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  const json document = json::parse(text, nullptr, false);
  if (!document.is_array()) return std::nullopt;
  Routes routes;
  for (const auto& element : document) {
    const auto route = plainRoute(element);
    if (!route) return std::nullopt;
    routes.push_back(*route);
  }
  return routes;
}

struct Counts {
  std::size_t read = 0;
  std::size_t refused = 0;
};

void compare(const std::string& text, Counts& counts) {
  const auto result = decodePatch(text);
  const auto expected = plainPatch(text);
  ASSERT_EQ(static_cast<bool>(result), expected.has_value()) << testing::PrintToString(text);
  if (result) {
    ++counts.read;
    ASSERT_EQ(result.value(), *expected) << testing::PrintToString(text);
    return;
  }
  ++counts.refused;
  const PatchFileError& error = result.error();
  ASSERT_FALSE(error.reason.empty()) << testing::PrintToString(text);
  ASSERT_TRUE(error.byteOffset && *error.byteOffset <= text.size()) << testing::PrintToString(text);
  ASSERT_TRUE(isPrintable(error.message())) << testing::PrintToString(error.message());
}

TEST(PatchFileOneByteTest, GoldenFileIsRead) {
  const auto result = decodePatch(kGolden);
  ASSERT_TRUE(result) << result.error().message();
  EXPECT_EQ(result.value(), (Routes{{0, 17, 1.0F, true}, {-3, 10, -0.25F, false}, {20, 4, 0.1F, true}}));
  EXPECT_EQ(plainPatch(kGolden), result.value());
}

TEST(PatchFileOneByteTest, EveryTruncationIsAnErrorAtItsEnd) {
  for (std::size_t length = 0; length < kGolden.size(); ++length) {
    const auto result = decodePatch(kGolden.substr(0, length));
    ASSERT_FALSE(result) << length;
    EXPECT_EQ(result.error().byteOffset, length) << result.error().message();
  }
}

TEST(PatchFileOneByteTest, EveryMissingBeginningIsAnError) {
  for (std::size_t begin = 1; begin < kGolden.size(); ++begin) {
    EXPECT_FALSE(decodePatch(kGolden.substr(begin))) << begin;
  }
}

TEST(PatchFileOneByteTest, EveryChangedByte) {
  Counts counts;
  for (std::size_t offset = 0; offset < kGolden.size(); ++offset) {
    for (unsigned change = 1; change < 256; ++change) {
      std::string text(kGolden);
      text[offset] = static_cast<char>(static_cast<unsigned char>(text[offset]) ^ change);
      ASSERT_NO_FATAL_FAILURE(compare(text, counts)) << "byte " << offset;
    }
  }
  EXPECT_EQ(counts.read + counts.refused, kGolden.size() * 255);
  EXPECT_GT(counts.read, 1000U);
  EXPECT_GT(counts.refused, 10000U);
}

TEST(PatchFileOneByteTest, EveryRemovedByte) {
  Counts counts;
  for (std::size_t offset = 0; offset < kGolden.size(); ++offset) {
    ASSERT_NO_FATAL_FAILURE(compare(std::string(kGolden).erase(offset, 1), counts)) << "byte " << offset;
  }
  EXPECT_EQ(counts.read + counts.refused, kGolden.size());
}

TEST(PatchFileOneByteTest, EveryInsertedByte) {
  Counts counts;
  for (std::size_t offset = 0; offset <= kGolden.size(); ++offset) {
    for (unsigned byte = 0; byte < 256; ++byte) {
      const std::string text = std::string(kGolden).insert(offset, 1, static_cast<char>(byte));
      ASSERT_NO_FATAL_FAILURE(compare(text, counts)) << "byte " << offset;
    }
  }
  EXPECT_EQ(counts.read + counts.refused, (kGolden.size() + 1) * 256);
  EXPECT_GT(counts.read, 1000U);
}

}  // namespace
}  // namespace tolvane::test
