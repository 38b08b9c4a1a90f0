// Bytes and escapes that no UTF-8 JSON text may hold: the reason, and where.
#include <string_view>

#include <gtest/gtest.h>

#include "core/patch_file/bad_patch.h"
#include "core/patch_file/syntax_errors.h"

namespace tolvane::test {
namespace {

using std::string_view_literals::operator""sv;

constexpr BadPatch kBytesThatNoStringMayHoldAsTheyAre[] = {
    {"[{\"note\":\"\x01\"}]", "element 0, byte 10",
     "syntax error while parsing value - invalid string: control character U+0001 (SOH) must be escaped to "
     "\\u0001"},
    {"[{\"note\":\"\x08\"}]", "element 0, byte 10",
     "syntax error while parsing value - invalid string: control character U+0008 (BS) must be escaped to "
     "\\u0008 or \\b"},
    {"[{\"note\":\"\t\"}]", "element 0, byte 10",
     "syntax error while parsing value - invalid string: control character U+0009 (HT) must be escaped to "
     "\\u0009 or \\t"},
    {"[{\"note\":\"a\nb\"}]", "element 0, byte 11",
     "syntax error while parsing value - invalid string: control character U+000A (LF) must be escaped to "
     "\\u000A or \\n"},
    {"[{\"note\":\"a\r\nb\"}]", "element 0, byte 11",
     "syntax error while parsing value - invalid string: control character U+000D (CR) must be escaped to "
     "\\u000D or \\r"},
    {"[{\"note\":\"\x1B[31m\"}]", "element 0, byte 10",
     "syntax error while parsing value - invalid string: control character U+001B (ESC) must be escaped to "
     "\\u001B"},
    {"[{\"note\":\"\x1F\"}]", "element 0, byte 10",
     "syntax error while parsing value - invalid string: control character U+001F (US) must be escaped to "
     "\\u001F"},
    {"[{\"\tnote\":1}]", "element 0, byte 3",
     "syntax error while parsing object key - invalid string: control character U+0009 (HT) must be escaped "
     "to \\u0009 or \\t"},
    {"[{\"gain\n\":1}]", "element 0, byte 7",
     "syntax error while parsing object key - invalid string: control character U+000A (LF) must be escaped "
     "to \\u000A or \\n"},
};

TEST(PatchFileEncodingTest, BytesThatNoStringMayHoldAsTheyAre) {
  expectErrors(kBytesThatNoStringMayHoldAsTheyAre);
}

constexpr BadPatch kEscapes[] = {
    {R"([{"note":"\"}])", "element 0, byte 14", kStringOpen},
    {R"([{"note":"\ "}])", "element 0, byte 11", kBadEscape},
    {R"([{"note":"\a"}])", "element 0, byte 11", kBadEscape},
    {R"([{"note":"\v"}])", "element 0, byte 11", kBadEscape},
    {R"([{"note":"\'"}])", "element 0, byte 11", kBadEscape},
    {R"([{"note":"\0"}])", "element 0, byte 11", kBadEscape},
    {R"([{"note":"\x41"}])", "element 0, byte 11", kBadEscape},
    {R"([{"note":"\U0041"}])", "element 0, byte 11", kBadEscape},
    {R"([{"note":"\u"}])", "element 0, byte 12", kBadCodePoint},
    {R"([{"note":"\u1"}])", "element 0, byte 13", kBadCodePoint},
    {R"([{"note":"\u123"}])", "element 0, byte 15", kBadCodePoint},
    {R"([{"note":"\u{41}"}])", "element 0, byte 12", kBadCodePoint},
    {R"([{"note":"\uGGGG"}])", "element 0, byte 12", kBadCodePoint},
    {R"([{"note":"\u-123"}])", "element 0, byte 12", kBadCodePoint},
    {R"([{"note":"\u 123"}])", "element 0, byte 12", kBadCodePoint},
    {"[{\"note\":\"\\\n\"}]", "element 0, byte 11", kBadEscape},
    {"[{\"note\":\"\\\xC3\xA9\"}]", "element 0, byte 11", kBadEscape},
    {R"([{"note":"a\)", "element 0, byte 12", kBadEscape},
    {R"([{"note":"\u00)", "element 0, byte 14", kBadCodePoint},
};

TEST(PatchFileEncodingTest, Escapes) {
  expectErrors(kEscapes);
}

constexpr BadPatch kHalfASurrogatePair[] = {
    {R"([{"note":"\uD800"}])", "element 0, byte 16", kHighAlone},
    {R"([{"note":"\uDBFF"}])", "element 0, byte 16", kHighAlone},
    {R"([{"note":"\uD800x"}])", "element 0, byte 16", kHighAlone},
    {R"([{"note":"\uD800\n"}])", "element 0, byte 17", kHighAlone},
    {R"([{"note":"\uD800\u0041"}])", "element 0, byte 21", kHighAlone},
    {R"([{"note":"\uD800\uD800"}])", "element 0, byte 21", kHighAlone},
    {R"([{"note":"\uDC00"}])", "element 0, byte 15", kLowAlone},
    {R"([{"note":"\uDFFF"}])", "element 0, byte 15", kLowAlone},
    {R"([{"note":"\uDC00\uD800"}])", "element 0, byte 15", kLowAlone},
    {R"([{"\uD800":1}])", "element 0, byte 9",
     "syntax error while parsing object key - invalid string: surrogate U+D800..U+DBFF must be followed by "
     "U+DC00..U+DFFF"},
};

TEST(PatchFileEncodingTest, HalfASurrogatePair) {
  expectErrors(kHalfASurrogatePair);
}

constexpr BadPatch kBytesThatAreNotUtf8[] = {
    {"[{\"note\":\"\x80\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"\xBF\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"a\xA9"
     "b\"}]",
     "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xC0\x80\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"\xC0\xAF\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"\xC1\xBF\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"\xC3\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xC3(\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xE0\x80\xAF\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xE0\x9F\xBF\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xE2\x82\"}]", "element 0, byte 12", kBadUtf8},
    {"[{\"note\":\"\xE2(\xA1\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xE2\x82(\"}]", "element 0, byte 12", kBadUtf8},
    {"[{\"note\":\"\xED\xA0\x80\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xED\xBF\xBF\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xED\xA0\x80\xED\xB0\x80\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xF0\x80\x80\xAF\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xF0\x8F\xBF\xBF\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xF0\x9F\x8E\"}]", "element 0, byte 13", kBadUtf8},
    {"[{\"note\":\"\xF0\x9F\x8E(\"}]", "element 0, byte 13", kBadUtf8},
    {"[{\"note\":\"\xF4\x90\x80\x80\"}]", "element 0, byte 11", kBadUtf8},
    {"[{\"note\":\"\xF5\x80\x80\x80\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"\xF8\x88\x80\x80\x80\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"\xFC\x84\x80\x80\x80\x80\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"\xFE\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"\xFF\"}]", "element 0, byte 10", kBadUtf8},
    {"[{\"note\":\"caf\xE9\"}]", "element 0, byte 14", kBadUtf8},
    {"[{\"\xFF\":1}]", "element 0, byte 3",
     "syntax error while parsing object key - invalid string: ill-formed UTF-8 byte"},
    {"[{\"note\":\"\xE2\x82", "element 0, byte 12", kBadUtf8},
};

TEST(PatchFileEncodingTest, BytesThatAreNotUtf8) {
  expectErrors(kBytesThatAreNotUtf8);
}

constexpr BadPatch kBytesOfOtherTextsOutsideAString[] = {
    {"\x80", "byte 0", kBadLiteral},           {"\xFF", "byte 0", kBadLiteral},
    {"[\xC3\xA9]", "byte 1", kBadLiteral},     {"[]\xFF", "byte 2", kBadLiteral},
    {"\xC2\xA0[]", "byte 0", kBadLiteral},     {"\xE2\x80\xA8[]", "byte 0", kBadLiteral},
    {"\xE2\x81\xA0[]", "byte 0", kBadLiteral}, {"\x0B[]", "byte 0", kBadLiteral},
    {"\x0C[]", "byte 0", kBadLiteral},         {"[\x1F]", "byte 1", kBadLiteral},
    {"\x1E[]\n", "byte 0", kBadLiteral},       {"[]\x1A", "byte 2", kBadLiteral},
    {"[]\x7F", "byte 2", kBadLiteral},         {"\x1F\x8B\x08", "byte 0", kBadLiteral},
    {"%PDF-1.7", "byte 0", kBadLiteral},       {"RIFF", "byte 0", kBadLiteral},
};

TEST(PatchFileEncodingTest, BytesOfOtherTextsOutsideAString) {
  expectErrors(kBytesOfOtherTextsOutsideAString);
}

constexpr BadPatch kByteOrderMarks[] = {
    {"\xEF", "byte 1", kBadMark},
    {"\xEF\xBB", "byte 2", kBadMark},
    {"\xEF\xBB[]", "byte 2", kBadMark},
    {"\xEF\xBF\xBF[]", "byte 1", kBadMark},
    {"\xEF\xBB\xBF", "byte 3", kValueMissing},
    {"\xEF\xBB\xBF\xEF\xBB\xBF[]", "byte 3", kBadLiteral},
    {" \xEF\xBB\xBF[]", "byte 1", kBadLiteral},
    {"[\xEF\xBB\xBF]", "byte 1", kBadLiteral},
    {"[]\xEF\xBB\xBF", "byte 2", kBadLiteral},
    {"\xEF\xBB\xBF{}", "byte 3", "expected an array of routes, found an object"},
    {"\xEF\xBB\xBF[1]", "element 0, byte 4", "expected an object, found a number"},
    {"\xFE\xFF", "byte 0", kBadLiteral},
    {"\xFF\xFE", "byte 0", kBadLiteral},
};

TEST(PatchFileEncodingTest, ByteOrderMarks) {
  expectErrors(kByteOrderMarks);
}

constexpr BadPatch kNulBytes[] = {
    {"\x00"sv, "byte 0", kNul},
    {"[\x00]"sv, "byte 1", kNul},
    {"[]\x00"sv, "byte 2", kNul},
    {"[]\x00rest"sv, "byte 2", kNul},
    {"[]\n\x00"sv, "byte 3", kNul},
    {"[{\"note\":\"\x00\"}]"sv, "byte 10", kNul},
    {"[{\"gain\x00\":1}]"sv, "byte 7", kNul},
    {"[{\"gain\":1\x00}]"sv, "byte 10", kNul},
    {"\xEF\xBB\xBF[]\x00"sv, "byte 5", kNul},
    {"[\x00]\x00"sv, "byte 1", kNul},
    {"\x00[\x00]"sv, "byte 0", kNul},
    {"[\x00\n\x00]\x00"sv, "byte 1", kNul},
    {"\xFF\xFE[\x00]\x00"sv, "byte 3", kNul},
    {"\x00\x00\xFE\xFF\x00\x00\x00["sv, "byte 0", kNul},
};

TEST(PatchFileEncodingTest, NulBytes) {
  expectErrors(kNulBytes);
}

}  // namespace
}  // namespace tolvane::test
