// Bytes and escapes that no UTF-8 JSON text may hold: the reason, and where.
#include <string_view>

#include <gtest/gtest.h>

#include "core/patch/bad_patch.h"
#include "core/patch/syntax_errors.h"

namespace tolvane::test {
namespace {

using std::string_view_literals::operator""sv;

constexpr BadPatch kBytesThatNoStringMayHoldAsTheyAre[] = {
    {"[{\"note\":\"\x01\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\x08\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\t\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"a\nb\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"a\r\nb\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\x1B[31m\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\x1F\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"\tnote\":1}]", "element 0, byte 3", kSyntaxError},
    {"[{\"gain\n\":1}]", "element 0, byte 7", kSyntaxError},
};

TEST(PatchFileEncodingTest, BytesThatNoStringMayHoldAsTheyAre) {
  expectErrors(kBytesThatNoStringMayHoldAsTheyAre);
}

constexpr BadPatch kEscapes[] = {
    {R"([{"note":"\"}])", "element 0, byte 14", kSyntaxError},
    {R"([{"note":"\ "}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":"\a"}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":"\v"}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":"\'"}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":"\0"}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":"\x41"}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":"\U0041"}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":"\u"}])", "element 0, byte 12", kSyntaxError},
    {R"([{"note":"\u1"}])", "element 0, byte 13", kSyntaxError},
    {R"([{"note":"\u123"}])", "element 0, byte 15", kSyntaxError},
    {R"([{"note":"\u{41}"}])", "element 0, byte 12", kSyntaxError},
    {R"([{"note":"\uGGGG"}])", "element 0, byte 12", kSyntaxError},
    {R"([{"note":"\u-123"}])", "element 0, byte 12", kSyntaxError},
    {R"([{"note":"\u 123"}])", "element 0, byte 12", kSyntaxError},
    {"[{\"note\":\"\\\n\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\\\xC3\xA9\"}]", "element 0, byte 11", kSyntaxError},
    {R"([{"note":"a\)", "element 0, byte 12", kSyntaxError},
    {R"([{"note":"\u00)", "element 0, byte 14", kSyntaxError},
};

TEST(PatchFileEncodingTest, Escapes) {
  expectErrors(kEscapes);
}

constexpr BadPatch kHalfASurrogatePair[] = {
    {R"([{"note":"\uD800"}])", "element 0, byte 16", kSyntaxError},
    {R"([{"note":"\uDBFF"}])", "element 0, byte 16", kSyntaxError},
    {R"([{"note":"\uD800x"}])", "element 0, byte 16", kSyntaxError},
    {R"([{"note":"\uD800\n"}])", "element 0, byte 17", kSyntaxError},
    {R"([{"note":"\uD800\u0041"}])", "element 0, byte 21", kSyntaxError},
    {R"([{"note":"\uD800\uD800"}])", "element 0, byte 21", kSyntaxError},
    {R"([{"note":"\uDC00"}])", "element 0, byte 15", kSyntaxError},
    {R"([{"note":"\uDFFF"}])", "element 0, byte 15", kSyntaxError},
    {R"([{"note":"\uDC00\uD800"}])", "element 0, byte 15", kSyntaxError},
    {R"([{"\uD800":1}])", "element 0, byte 9", kSyntaxError},
};

TEST(PatchFileEncodingTest, HalfASurrogatePair) {
  expectErrors(kHalfASurrogatePair);
}

constexpr BadPatch kBytesThatAreNotUtf8[] = {
    {"[{\"note\":\"\x80\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\xBF\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"a\xA9"
     "b\"}]",
     "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xC0\x80\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\xC0\xAF\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\xC1\xBF\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\xC3\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xC3(\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xE0\x80\xAF\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xE0\x9F\xBF\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xE2\x82\"}]", "element 0, byte 12", kSyntaxError},
    {"[{\"note\":\"\xE2(\xA1\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xE2\x82(\"}]", "element 0, byte 12", kSyntaxError},
    {"[{\"note\":\"\xED\xA0\x80\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xED\xBF\xBF\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xED\xA0\x80\xED\xB0\x80\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xF0\x80\x80\xAF\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xF0\x8F\xBF\xBF\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xF0\x9F\x8E\"}]", "element 0, byte 13", kSyntaxError},
    {"[{\"note\":\"\xF0\x9F\x8E(\"}]", "element 0, byte 13", kSyntaxError},
    {"[{\"note\":\"\xF4\x90\x80\x80\"}]", "element 0, byte 11", kSyntaxError},
    {"[{\"note\":\"\xF5\x80\x80\x80\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\xF8\x88\x80\x80\x80\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\xFC\x84\x80\x80\x80\x80\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\xFE\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"\xFF\"}]", "element 0, byte 10", kSyntaxError},
    {"[{\"note\":\"caf\xE9\"}]", "element 0, byte 14", kSyntaxError},
    {"[{\"\xFF\":1}]", "element 0, byte 3", kSyntaxError},
    {"[{\"note\":\"\xE2\x82", "element 0, byte 12", kSyntaxError},
};

TEST(PatchFileEncodingTest, BytesThatAreNotUtf8) {
  expectErrors(kBytesThatAreNotUtf8);
}

constexpr BadPatch kBytesOfOtherTextsOutsideAString[] = {
    {"\x80", "byte 0", kSyntaxError},           {"\xFF", "byte 0", kSyntaxError},
    {"[\xC3\xA9]", "byte 1", kSyntaxError},     {"[]\xFF", "byte 2", kSyntaxError},
    {"\xC2\xA0[]", "byte 0", kSyntaxError},     {"\xE2\x80\xA8[]", "byte 0", kSyntaxError},
    {"\xE2\x81\xA0[]", "byte 0", kSyntaxError}, {"\x0B[]", "byte 0", kSyntaxError},
    {"\x0C[]", "byte 0", kSyntaxError},         {"[\x1F]", "byte 1", kSyntaxError},
    {"\x1E[]\n", "byte 0", kSyntaxError},       {"[]\x1A", "byte 2", kSyntaxError},
    {"[]\x7F", "byte 2", kSyntaxError},         {"\x1F\x8B\x08", "byte 0", kSyntaxError},
    {"%PDF-1.7", "byte 0", kSyntaxError},       {"RIFF", "byte 0", kSyntaxError},
};

TEST(PatchFileEncodingTest, BytesOfOtherTextsOutsideAString) {
  expectErrors(kBytesOfOtherTextsOutsideAString);
}

constexpr BadPatch kByteOrderMarks[] = {
    {"\xEF", "byte 1", kSyntaxError},
    {"\xEF\xBB", "byte 2", kSyntaxError},
    {"\xEF\xBB[]", "byte 2", kSyntaxError},
    {"\xEF\xBF\xBF[]", "byte 1", kSyntaxError},
    {"\xEF\xBB\xBF", "byte 3", kSyntaxError},
    {"\xEF\xBB\xBF\xEF\xBB\xBF[]", "byte 3", kSyntaxError},
    {" \xEF\xBB\xBF[]", "byte 1", kSyntaxError},
    {"[\xEF\xBB\xBF]", "byte 1", kSyntaxError},
    {"[]\xEF\xBB\xBF", "byte 2", kSyntaxError},
    {"\xEF\xBB\xBF{}", "byte 3", "expected an array of routes, found an object"},
    {"\xEF\xBB\xBF[1]", "element 0, byte 4", "expected an object, found a number"},
    {"\xFE\xFF", "byte 0", kSyntaxError},
    {"\xFF\xFE", "byte 0", kSyntaxError},
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
