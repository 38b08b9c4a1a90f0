// Texts whose brackets, commas, colons and names do not make JSON: the reason, and where.
#include <string_view>

#include <gtest/gtest.h>

#include "core/patch/bad_patch.h"
#include "core/patch/syntax_errors.h"

namespace tolvane::test {
namespace {

constexpr BadPatch kNothingOrNotEnough[] = {
    {"", "byte 0", "there is no text"},
    {" \t\r\n ", "byte 5", kSyntaxError},
    {"[", "byte 1", kSyntaxError},
    {"[{", "element 0, byte 2", kSyntaxError},
    {R"([{")", "element 0, byte 3", kSyntaxError},
    {R"([{"gain)", "element 0, byte 7", kSyntaxError},
    {R"([{"gain")", R"(element 0, member "gain", byte 8)", kSyntaxError},
    {R"([{"gain":)", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":1)", "element 0, byte 10", kSyntaxError},
    {R"([{"gain":-)", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":1e)", R"(element 0, member "gain", byte 11)", kSyntaxError},
    {R"([{"gain":")", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":t)", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"note":[)", "element 0, byte 10", kSyntaxError},
    {R"([{"note":{)", "element 0, byte 10", kSyntaxError},
    {R"([{"note":{})", "element 0, byte 11", kSyntaxError},
    {R"([{"note":1,)", "element 0, byte 11", kSyntaxError},
    {R"([{"note":1})", R"(element 0, member "inputChannel", byte 1)", "missing"},
};

TEST(PatchFileStructureTest, NothingOrNotEnough) {
  expectErrors(kNothingOrNotEnough);
}

constexpr BadPatch kTooMuchOrAtTheWrongPlace[] = {
    {"]", "byte 0", kSyntaxError},
    {"}", "byte 0", kSyntaxError},
    {",", "byte 0", kSyntaxError},
    {":", "byte 0", kSyntaxError},
    {"[]]", "byte 2", kSyntaxError},
    {"[]}", "byte 2", kSyntaxError},
    {"[],", "byte 2", kSyntaxError},
    {"[]:", "byte 2", kSyntaxError},
    {"[],[]", "byte 2", kSyntaxError},
    {"[] []", "byte 3", kSyntaxError},
    {"[]{}", "byte 2", kSyntaxError},
    {"[]null", "byte 5", kSyntaxError},
    {"[]1", "byte 2", kSyntaxError},
    {R"([]"a")", "byte 4", kSyntaxError},
    {"[]x", "byte 2", kSyntaxError},
    {"[];", "byte 2", kSyntaxError},
    {"[,]", "byte 1", kSyntaxError},
    {"[,{}]", "byte 1", kSyntaxError},
    {"[:]", "byte 1", kSyntaxError},
    {"[}", "byte 1", kSyntaxError},
    {"[{]", "element 0, byte 2", kSyntaxError},
    {"[{]}", "element 0, byte 2", kSyntaxError},
    {"[{,}]", "element 0, byte 2", kSyntaxError},
    {"[{:1}]", "element 0, byte 2", kSyntaxError},
    {R"([{"note"}])", "element 0, byte 8", kSyntaxError},
    {R"([{"note",1}])", "element 0, byte 8", kSyntaxError},
    {R"([{"note" 1}])", "element 0, byte 9", kSyntaxError},
    {R"([{"note"::1}])", "element 0, byte 9", kSyntaxError},
    {R"([{"note":}])", "element 0, byte 9", kSyntaxError},
    {R"([{"note":,}])", "element 0, byte 9", kSyntaxError},
    {R"([{"note":])", "element 0, byte 9", kSyntaxError},
    {R"([{"note":1])", "element 0, byte 10", kSyntaxError},
    {R"([{"note":1;}])", "element 0, byte 10", kSyntaxError},
    {R"([{"note":1 "gain":2}])", "element 0, byte 16", kSyntaxError},
    {R"([{"note":1:"gain":2}])", "element 0, byte 10", kSyntaxError},
    {R"([{"note":1,}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":1,,}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":1,,"gain":2}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":1,]}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":[1,]}])", "element 0, byte 12", kSyntaxError},
    {R"([{"note":[,1]}])", "element 0, byte 10", kSyntaxError},
    {R"([{"note":[1,,2]}])", "element 0, byte 12", kSyntaxError},
    {R"([{"note":[1 2]}])", "element 0, byte 12", kSyntaxError},
    {R"([{"note":[1:2]}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":[}]}])", "element 0, byte 10", kSyntaxError},
    {R"([{"note":[1}]}])", "element 0, byte 11", kSyntaxError},
    {R"([{"note":{1}}])", "element 0, byte 10", kSyntaxError},
    {R"([{"note":{]}])", "element 0, byte 10", kSyntaxError},
    {R"([{"note":(1)}])", "element 0, byte 9", kSyntaxError},
};

TEST(PatchFileStructureTest, TooMuchOrAtTheWrongPlace) {
  expectErrors(kTooMuchOrAtTheWrongPlace);
}

constexpr BadPatch kNamesThatAreNoStrings[] = {
    {"[{note:1}]", "element 0, byte 3", kSyntaxError},   {"[{'note':1}]", "element 0, byte 2", kSyntaxError},
    {"[{`note`:1}]", "element 0, byte 2", kSyntaxError}, {"[{1:1}]", "element 0, byte 2", kSyntaxError},
    {"[{-1:1}]", "element 0, byte 3", kSyntaxError},     {"[{null:1}]", "element 0, byte 5", kSyntaxError},
    {"[{true:1}]", "element 0, byte 5", kSyntaxError},   {"[{false:1}]", "element 0, byte 6", kSyntaxError},
    {"[{[]:1}]", "element 0, byte 2", kSyntaxError},     {"[{{}:1}]", "element 0, byte 2", kSyntaxError},
    {"[{$note:1}]", "element 0, byte 2", kSyntaxError},
};

TEST(PatchFileStructureTest, NamesThatAreNoStrings) {
  expectErrors(kNamesThatAreNoStrings);
}

}  // namespace
}  // namespace tolvane::test
