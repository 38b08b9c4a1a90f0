// Values that JSON does not know: the reason, and where.
#include <string_view>

#include <gtest/gtest.h>

#include "core/patch_file/bad_patch.h"
#include "core/patch_file/syntax_errors.h"

namespace tolvane::test {
namespace {

constexpr BadPatch kWordsThatJsonDoesNotKnow[] = {
    {"nul", "byte 3", kBadLiteral},
    {"NULL", "byte 0", kBadLiteral},
    {"[nul]", "byte 4", kBadLiteral},
    {"[Null]", "byte 1", kBadLiteral},
    {"[TRUE]", "byte 1", kBadLiteral},
    {"[False]", "byte 1", kBadLiteral},
    {"[tru]", "byte 4", kBadLiteral},
    {"[trueish]", "element 0, byte 1", "expected an object, found true"},
    {"[undefined]", "byte 1", kBadLiteral},
    {"[yes]", "byte 1", kBadLiteral},
    {"[NaN]", "byte 1", kBadLiteral},
    {"[nan]", "byte 2", kBadLiteral},
    {"[Infinity]", "byte 1", kBadLiteral},
    {"[-Infinity]", "byte 2", kNoDigitAfterMinus},
    {"[-inf]", "byte 2", kNoDigitAfterMinus},
    {"[+Infinity]", "byte 1", kBadLiteral},
    {R"([{"gain":NaN}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"gain":nan}])", R"(element 0, member "gain", byte 10)", kBadLiteral},
    {R"([{"gain":-NaN}])", R"(element 0, member "gain", byte 10)", kNoDigitAfterMinus},
    {R"([{"gain":Infinity}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"gain":-Infinity}])", R"(element 0, member "gain", byte 10)", kNoDigitAfterMinus},
    {R"([{"gain":inf}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"active":True}])", R"(element 0, member "active", byte 11)", kBadLiteral},
    {R"([{"active":FALSE}])", R"(element 0, member "active", byte 11)", kBadLiteral},
    {R"([{"active":yes}])", R"(element 0, member "active", byte 11)", kBadLiteral},
    {R"([{"active":nil}])", R"(element 0, member "active", byte 12)", kBadLiteral},
};

TEST(PatchFileValueTest, WordsThatJsonDoesNotKnow) {
  expectErrors(kWordsThatJsonDoesNotKnow);
}

constexpr BadPatch kNumbersThatJsonDoesNotKnow[] = {
    {R"([{"gain":+1}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"gain":-}])", R"(element 0, member "gain", byte 10)", kNoDigitAfterMinus},
    {R"([{"gain":--1}])", R"(element 0, member "gain", byte 10)", kNoDigitAfterMinus},
    {R"([{"gain":- 1}])", R"(element 0, member "gain", byte 10)", kNoDigitAfterMinus},
    {R"([{"gain":-a}])", R"(element 0, member "gain", byte 10)", kNoDigitAfterMinus},
    {R"([{"gain":01}])", "element 0, byte 10", kSecondNumber},
    {R"([{"gain":-01}])", "element 0, byte 11", kSecondNumber},
    {R"([{"gain":00}])", "element 0, byte 10", kSecondNumber},
    {R"([{"gain":012.5}])", "element 0, byte 13", kSecondNumber},
    {R"([{"gain":1.}])", R"(element 0, member "gain", byte 11)", kNoDigitAfterPoint},
    {R"([{"gain":-1.}])", R"(element 0, member "gain", byte 12)", kNoDigitAfterPoint},
    {R"([{"gain":1.e3}])", R"(element 0, member "gain", byte 11)", kNoDigitAfterPoint},
    {R"([{"gain":.5}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"gain":-.5}])", R"(element 0, member "gain", byte 10)", kNoDigitAfterMinus},
    {R"([{"gain":.}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"gain":1.2.3}])", "element 0, byte 12", kBadLiteralInObject},
    {R"([{"gain":1..2}])", R"(element 0, member "gain", byte 11)", kNoDigitAfterPoint},
    {R"([{"gain":1e}])", R"(element 0, member "gain", byte 11)", kNoExponent},
    {R"([{"gain":1E}])", R"(element 0, member "gain", byte 11)", kNoExponent},
    {R"([{"gain":1e+}])", R"(element 0, member "gain", byte 12)", kNoDigitAfterSign},
    {R"([{"gain":1E-}])", R"(element 0, member "gain", byte 12)", kNoDigitAfterSign},
    {R"([{"gain":1e+-1}])", R"(element 0, member "gain", byte 12)", kNoDigitAfterSign},
    {R"([{"gain":1e1.5}])", "element 0, byte 12", kBadLiteralInObject},
    {R"([{"gain":1e1e1}])", "element 0, byte 12", kBadLiteralInObject},
    {R"([{"gain":e1}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"gain":0x1F}])", "element 0, byte 10", kBadLiteralInObject},
    {R"([{"gain":0b1}])", "element 0, byte 10", kBadLiteralInObject},
    {R"([{"gain":0o7}])", "element 0, byte 10", kBadLiteralInObject},
    {R"([{"gain":1_000}])", "element 0, byte 10", kBadLiteralInObject},
    {R"([{"gain":1 000}])", "element 0, byte 11", kSecondNumber},
    {R"([{"gain":1'000}])", "element 0, byte 10", kBadLiteralInObject},
    {R"([{"gain":0,5}])", "element 0, byte 11",
     "syntax error while parsing object key - unexpected number literal; expected string literal"},
    {R"([{"gain":1,5}])", "element 0, byte 11",
     "syntax error while parsing object key - unexpected number literal; expected string literal"},
    {R"([{"gain":1.0f}])", "element 0, byte 13", kBadLiteralInObject},
    {R"([{"gain":1.0L}])", "element 0, byte 12", kBadLiteralInObject},
    {R"([{"gain":1%}])", "element 0, byte 10", kBadLiteralInObject},
    {R"([{"gain":-6dB}])", "element 0, byte 11", kBadLiteralInObject},
    {"[{\"gain\":\xEF\xBC\x91}]", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {"[{\"gain\":1\xC2\xBD}]", "element 0, byte 10", kBadLiteralInObject},
    {"[{\"gain\":\xE2\x88\x92"
     "1}]",
     R"(element 0, member "gain", byte 9)", kBadLiteral},
};

TEST(PatchFileValueTest, NumbersThatJsonDoesNotKnow) {
  expectErrors(kNumbersThatJsonDoesNotKnow);
}

constexpr BadPatch kCommentsAndOtherLanguages[] = {
    {"// a patch\n[]", "byte 0", kBadLiteral},
    {"/* a patch */[]", "byte 0", kBadLiteral},
    {"# a patch\n[]", "byte 0", kBadLiteral},
    {"-- a patch\n[]", "byte 1", kNoDigitAfterMinus},
    {"[]// a patch", "byte 2", kBadLiteral},
    {"[]/* a patch */", "byte 2", kBadLiteral},
    {"[/**/]", "byte 1", kBadLiteral},
    {R"([{"gain":/**/1}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"gain":1/**/}])", "element 0, byte 10", kBadLiteralInObject},
    {"<patch></patch>", "byte 0", kBadLiteral},
    {"- gain: 1.0", "byte 1", kNoDigitAfterMinus},
    {"gain = 1.0", "byte 0", kBadLiteral},
    {"{gain: 1}", "byte 0", "expected an array of routes, found an object"},
    {"(null)", "byte 0", kBadLiteral},
    {"['gain']", "byte 1", kBadLiteral},
    {R"([{"gain":'1'}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"gain":`1`}])", R"(element 0, member "gain", byte 9)", kBadLiteral},
    {R"([{"gain":"""1"""}])", "element 0, byte 13",
     "syntax error while parsing object - unexpected string literal; expected '}'"},
    {"[...]", "byte 1", kBadLiteral},
};

TEST(PatchFileValueTest, CommentsAndOtherLanguages) {
  expectErrors(kCommentsAndOtherLanguages);
}

constexpr BadPatch kNumbersBeyondWhatCanBeRead[] = {
    {"1e400", "byte 0", kBeyondDouble},
    {"[1e400]", "byte 1", kBeyondDouble},
    {"[-1e400]", "byte 1", kBeyondDouble},
    {R"([{"gain":1e309}])", R"(element 0, member "gain", byte 9)", kBeyondDouble},
    {R"([{"gain":-1e309}])", R"(element 0, member "gain", byte 9)", kBeyondDouble},
    {R"([{"gain":1e99999999999999999999}])", R"(element 0, member "gain", byte 9)", kBeyondDouble},
    {R"([{"inputChannel":1e400}])", R"(element 0, member "inputChannel", byte 17)", kBeyondDouble},
    {R"([{"note":1e400}])", "element 0, byte 9", kBeyondDouble},
    {R"([{"note":[-1e400]}])", "element 0, byte 10", kBeyondDouble},
};

TEST(PatchFileValueTest, NumbersBeyondWhatCanBeRead) {
  expectErrors(kNumbersBeyondWhatCanBeRead);
}

}  // namespace
}  // namespace tolvane::test
