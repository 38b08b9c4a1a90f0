// Why a text is no patch, in words that tests share.
#pragma once

#include <string_view>

namespace tolvane::test {

/// What is no JSON. The parser goes on in its own words, which change with its version.
inline constexpr std::string_view kSyntaxError = "syntax error";
inline constexpr std::string_view kNul = "found a NUL byte; a patch file is UTF-8 text";

}  // namespace tolvane::test
