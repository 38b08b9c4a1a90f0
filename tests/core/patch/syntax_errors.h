// Texts of errors that several tests expect.
#pragma once

#include <string_view>

namespace tolvane::test {

/// The beginning of the error for text that is not JSON. The rest is the parser's, and changes with its
/// version.
inline constexpr std::string_view kSyntaxError = "syntax error";
inline constexpr std::string_view kNul = "found a NUL byte; JSON is UTF-8 text";

}  // namespace tolvane::test
