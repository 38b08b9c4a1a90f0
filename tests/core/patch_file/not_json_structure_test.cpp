// Texts whose brackets, commas, colons and names do not make JSON: the reason, and where.
#include <string_view>

#include <gtest/gtest.h>

#include "core/patch_file/bad_patch.h"
#include "core/patch_file/syntax_errors.h"

namespace tolvane::test {
namespace {

constexpr BadPatch kNothingOrNotEnough[] = {
    {"", "byte 0", kValueMissing},
    {" \t\r\n ", "byte 5", kValueMissing},
    {"[", "byte 1", kValueMissing},
    {"[{", "element 0, byte 2", kKeyMissing},
    {R"([{")", "element 0, byte 3", kKeyOpen},
    {R"([{"gain)", "element 0, byte 7", kKeyOpen},
    {R"([{"gain")", R"(element 0, member "gain", byte 8)",
     "syntax error while parsing object separator - unexpected end of input; expected ':'"},
    {R"([{"gain":)", R"(element 0, member "gain", byte 9)", kValueMissing},
    {R"([{"gain":1)", "element 0, byte 10", kObjectOpen},
    {R"([{"gain":-)", R"(element 0, member "gain", byte 10)", kNoDigitAfterMinus},
    {R"([{"gain":1e)", R"(element 0, member "gain", byte 11)", kNoExponent},
    {R"([{"gain":")", R"(element 0, member "gain", byte 10)", kStringOpen},
    {R"([{"gain":t)", R"(element 0, member "gain", byte 10)", kBadLiteral},
    {R"([{"note":[)", "element 0, byte 10", kValueMissing},
    {R"([{"note":{)", "element 0, byte 10", kKeyMissing},
    {R"([{"note":{})", "element 0, byte 11", kObjectOpen},
    {R"([{"note":1,)", "element 0, byte 11", kKeyMissing},
    {R"([{"note":1})", R"(element 0, member "inputChannel", byte 1)", "missing"},
};

TEST(PatchFileStructureTest, NothingOrNotEnough) {
  expectErrors(kNothingOrNotEnough);
}

constexpr BadPatch kTooMuchOrAtTheWrongPlace[] = {
    {"]", "byte 0", "syntax error while parsing value - unexpected ']'; expected '[', '{', or a literal"},
    {"}", "byte 0", "syntax error while parsing value - unexpected '}'; expected '[', '{', or a literal"},
    {",", "byte 0", "syntax error while parsing value - unexpected ','; expected '[', '{', or a literal"},
    {":", "byte 0", "syntax error while parsing value - unexpected ':'; expected '[', '{', or a literal"},
    {"[]]", "byte 2", "syntax error while parsing value - unexpected ']'; expected end of input"},
    {"[]}", "byte 2", "syntax error while parsing value - unexpected '}'; expected end of input"},
    {"[],", "byte 2", "syntax error while parsing value - unexpected ','; expected end of input"},
    {"[]:", "byte 2", "syntax error while parsing value - unexpected ':'; expected end of input"},
    {"[],[]", "byte 2", "syntax error while parsing value - unexpected ','; expected end of input"},
    {"[] []", "byte 3", "syntax error while parsing value - unexpected '['; expected end of input"},
    {"[]{}", "byte 2", "syntax error while parsing value - unexpected '{'; expected end of input"},
    {"[]null", "byte 5", "syntax error while parsing value - unexpected null literal; expected end of input"},
    {"[]1", "byte 2", "syntax error while parsing value - unexpected number literal; expected end of input"},
    {R"([]"a")", "byte 4",
     "syntax error while parsing value - unexpected string literal; expected end of input"},
    {"[]x", "byte 2", kBadLiteral},
    {"[];", "byte 2", kBadLiteral},
    {"[,]", "byte 1", "syntax error while parsing value - unexpected ','; expected '[', '{', or a literal"},
    {"[,{}]", "byte 1", "syntax error while parsing value - unexpected ','; expected '[', '{', or a literal"},
    {"[:]", "byte 1", "syntax error while parsing value - unexpected ':'; expected '[', '{', or a literal"},
    {"[}", "byte 1", "syntax error while parsing value - unexpected '}'; expected '[', '{', or a literal"},
    {"[{]", "element 0, byte 2",
     "syntax error while parsing object key - unexpected ']'; expected string literal"},
    {"[{]}", "element 0, byte 2",
     "syntax error while parsing object key - unexpected ']'; expected string literal"},
    {"[{,}]", "element 0, byte 2",
     "syntax error while parsing object key - unexpected ','; expected string literal"},
    {"[{:1}]", "element 0, byte 2",
     "syntax error while parsing object key - unexpected ':'; expected string literal"},
    {R"([{"note"}])", "element 0, byte 8",
     "syntax error while parsing object separator - unexpected '}'; expected ':'"},
    {R"([{"note",1}])", "element 0, byte 8",
     "syntax error while parsing object separator - unexpected ','; expected ':'"},
    {R"([{"note" 1}])", "element 0, byte 9",
     "syntax error while parsing object separator - unexpected number literal; expected ':'"},
    {R"([{"note"::1}])", "element 0, byte 9",
     "syntax error while parsing value - unexpected ':'; expected '[', '{', or a literal"},
    {R"([{"note":}])", "element 0, byte 9",
     "syntax error while parsing value - unexpected '}'; expected '[', '{', or a literal"},
    {R"([{"note":,}])", "element 0, byte 9",
     "syntax error while parsing value - unexpected ','; expected '[', '{', or a literal"},
    {R"([{"note":])", "element 0, byte 9",
     "syntax error while parsing value - unexpected ']'; expected '[', '{', or a literal"},
    {R"([{"note":1])", "element 0, byte 10",
     "syntax error while parsing object - unexpected ']'; expected '}'"},
    {R"([{"note":1;}])", "element 0, byte 10", kBadLiteralInObject},
    {R"([{"note":1 "gain":2}])", "element 0, byte 16",
     "syntax error while parsing object - unexpected string literal; expected '}'"},
    {R"([{"note":1:"gain":2}])", "element 0, byte 10",
     "syntax error while parsing object - unexpected ':'; expected '}'"},
    {R"([{"note":1,}])", "element 0, byte 11",
     "syntax error while parsing object key - unexpected '}'; expected string literal"},
    {R"([{"note":1,,}])", "element 0, byte 11",
     "syntax error while parsing object key - unexpected ','; expected string literal"},
    {R"([{"note":1,,"gain":2}])", "element 0, byte 11",
     "syntax error while parsing object key - unexpected ','; expected string literal"},
    {R"([{"note":1,]}])", "element 0, byte 11",
     "syntax error while parsing object key - unexpected ']'; expected string literal"},
    {R"([{"note":[1,]}])", "element 0, byte 12",
     "syntax error while parsing value - unexpected ']'; expected '[', '{', or a literal"},
    {R"([{"note":[,1]}])", "element 0, byte 10",
     "syntax error while parsing value - unexpected ','; expected '[', '{', or a literal"},
    {R"([{"note":[1,,2]}])", "element 0, byte 12",
     "syntax error while parsing value - unexpected ','; expected '[', '{', or a literal"},
    {R"([{"note":[1 2]}])", "element 0, byte 12",
     "syntax error while parsing array - unexpected number literal; expected ']'"},
    {R"([{"note":[1:2]}])", "element 0, byte 11",
     "syntax error while parsing array - unexpected ':'; expected ']'"},
    {R"([{"note":[}]}])", "element 0, byte 10",
     "syntax error while parsing value - unexpected '}'; expected '[', '{', or a literal"},
    {R"([{"note":[1}]}])", "element 0, byte 11",
     "syntax error while parsing array - unexpected '}'; expected ']'"},
    {R"([{"note":{1}}])", "element 0, byte 10",
     "syntax error while parsing object key - unexpected number literal; expected string literal"},
    {R"([{"note":{]}])", "element 0, byte 10",
     "syntax error while parsing object key - unexpected ']'; expected string literal"},
    {R"([{"note":(1)}])", "element 0, byte 9", kBadLiteral},
};

TEST(PatchFileStructureTest, TooMuchOrAtTheWrongPlace) {
  expectErrors(kTooMuchOrAtTheWrongPlace);
}

constexpr BadPatch kNamesThatAreNoStrings[] = {
    {"[{note:1}]", "element 0, byte 3", kBadKey},
    {"[{'note':1}]", "element 0, byte 2", kBadKey},
    {"[{`note`:1}]", "element 0, byte 2", kBadKey},
    {"[{1:1}]", "element 0, byte 2",
     "syntax error while parsing object key - unexpected number literal; expected string literal"},
    {"[{-1:1}]", "element 0, byte 3",
     "syntax error while parsing object key - unexpected number literal; expected string literal"},
    {"[{null:1}]", "element 0, byte 5",
     "syntax error while parsing object key - unexpected null literal; expected string literal"},
    {"[{true:1}]", "element 0, byte 5",
     "syntax error while parsing object key - unexpected true literal; expected string literal"},
    {"[{false:1}]", "element 0, byte 6",
     "syntax error while parsing object key - unexpected false literal; expected string literal"},
    {"[{[]:1}]", "element 0, byte 2",
     "syntax error while parsing object key - unexpected '['; expected string literal"},
    {"[{{}:1}]", "element 0, byte 2",
     "syntax error while parsing object key - unexpected '{'; expected string literal"},
    {"[{$note:1}]", "element 0, byte 2", kBadKey},
};

TEST(PatchFileStructureTest, NamesThatAreNoStrings) {
  expectErrors(kNamesThatAreNoStrings);
}

}  // namespace
}  // namespace tolvane::test
