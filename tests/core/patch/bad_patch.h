// Tables of patch files that cannot be read.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "core/patch/patch_file.h"
#include "core/patch/syntax_errors.h"

namespace tolvane::test {

struct BadPatch {
  std::string_view text;
  std::string_view where;   // "element 0, member \"gain\", byte 9"
  std::string_view reason;  // the rest of the message; for a syntax error, its beginning
};

/// True if any terminal or window can show the text as it is, on one line.
inline bool isPrintable(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

inline void expectError(std::string_view text, std::string_view where, std::string_view reason) {
  const auto result = decodePatch(text);
  ASSERT_FALSE(result) << testing::PrintToString(text) << " was read";
  const std::string message = result.error().message();
  const std::string expected = std::string(where) + ": " + std::string(reason);
  EXPECT_EQ(reason == kSyntaxError ? message.substr(0, expected.size()) : message, expected)
      << testing::PrintToString(text);
  EXPECT_TRUE(isPrintable(message)) << testing::PrintToString(message);
  ASSERT_TRUE(result.error().byteOffset.has_value());
  EXPECT_LE(*result.error().byteOffset, text.size());
}

inline void expectErrors(std::span<const BadPatch> patches) {
  ASSERT_FALSE(patches.empty());
  for (const BadPatch& patch : patches) expectError(patch.text, patch.where, patch.reason);
}

}  // namespace tolvane::test
