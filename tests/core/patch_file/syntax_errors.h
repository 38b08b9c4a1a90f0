// Why a text is no JSON, in the words of the parser.
#pragma once

namespace tolvane::test {

inline constexpr auto kValueMissing =
    "syntax error while parsing value - unexpected end of input; expected '[', '{', or a literal";
inline constexpr auto kKeyMissing =
    "syntax error while parsing object key - unexpected end of input; expected string literal";
inline constexpr auto kObjectOpen =
    "syntax error while parsing object - unexpected end of input; expected '}'";
inline constexpr auto kBadLiteral = "syntax error while parsing value - invalid literal";
inline constexpr auto kBadKey = "syntax error while parsing object key - invalid literal";
inline constexpr auto kBadLiteralInObject = "syntax error while parsing object - invalid literal";
inline constexpr auto kStringOpen =
    "syntax error while parsing value - invalid string: missing closing quote";
inline constexpr auto kKeyOpen =
    "syntax error while parsing object key - invalid string: missing closing quote";
inline constexpr auto kNoDigitAfterMinus =
    "syntax error while parsing value - invalid number; expected digit after '-'";
inline constexpr auto kNoExponent =
    "syntax error while parsing value - invalid number; expected '+', '-', or digit after exponent";
inline constexpr auto kNoDigitAfterPoint =
    "syntax error while parsing value - invalid number; expected digit after '.'";
inline constexpr auto kNoDigitAfterSign =
    "syntax error while parsing value - invalid number; expected digit after exponent sign";
inline constexpr auto kSecondNumber =
    "syntax error while parsing object - unexpected number literal; expected '}'";
inline constexpr auto kBeyondDouble = "number out of range for a 64-bit float";
inline constexpr auto kBadEscape =
    "syntax error while parsing value - invalid string: forbidden character after backslash";
inline constexpr auto kBadCodePoint =
    "syntax error while parsing value - invalid string: '\\u' must be followed by 4 hex digits";
inline constexpr auto kHighAlone =
    "syntax error while parsing value - invalid string: surrogate U+D800..U+DBFF must be followed by "
    "U+DC00..U+DFFF";
inline constexpr auto kLowAlone =
    "syntax error while parsing value - invalid string: surrogate U+DC00..U+DFFF must follow U+D800..U+DBFF";
inline constexpr auto kBadUtf8 = "syntax error while parsing value - invalid string: ill-formed UTF-8 byte";
inline constexpr auto kBadMark =
    "syntax error while parsing value - invalid BOM; must be 0xEF 0xBB 0xBF if given";
inline constexpr auto kNul = "found a NUL byte; a patch file is UTF-8 text";

}  // namespace tolvane::test
