// Values that JSON does not know: the reason, and where.
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "core/patch/bad_patch.h"
#include "core/patch/syntax_errors.h"

namespace tolvane::test {
namespace {

constexpr BadPatch kWordsThatJsonDoesNotKnow[] = {
    {"nul", "byte 3", kSyntaxError},
    {"NULL", "byte 0", kSyntaxError},
    {"[nul]", "byte 4", kSyntaxError},
    {"[Null]", "byte 1", kSyntaxError},
    {"[TRUE]", "byte 1", kSyntaxError},
    {"[False]", "byte 1", kSyntaxError},
    {"[tru]", "byte 4", kSyntaxError},
    {"[trueish]", "element 0, byte 1", "expected an object, found true"},
    {"[undefined]", "byte 1", kSyntaxError},
    {"[yes]", "byte 1", kSyntaxError},
    {"[NaN]", "byte 1", kSyntaxError},
    {"[nan]", "byte 2", kSyntaxError},
    {"[Infinity]", "byte 1", kSyntaxError},
    {"[-Infinity]", "byte 2", kSyntaxError},
    {"[-inf]", "byte 2", kSyntaxError},
    {"[+Infinity]", "byte 1", kSyntaxError},
    {R"([{"gain":NaN}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":nan}])", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":-NaN}])", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":Infinity}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":-Infinity}])", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":inf}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"active":True}])", R"(element 0, member "active", byte 11)", kSyntaxError},
    {R"([{"active":FALSE}])", R"(element 0, member "active", byte 11)", kSyntaxError},
    {R"([{"active":yes}])", R"(element 0, member "active", byte 11)", kSyntaxError},
    {R"([{"active":nil}])", R"(element 0, member "active", byte 12)", kSyntaxError},
};

TEST(PatchFileValueTest, WordsThatJsonDoesNotKnow) {
  expectErrors(kWordsThatJsonDoesNotKnow);
}

constexpr BadPatch kNumbersThatJsonDoesNotKnow[] = {
    {R"([{"gain":+1}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":-}])", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":--1}])", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":- 1}])", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":-a}])", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":01}])", "element 0, byte 10", kSyntaxError},
    {R"([{"gain":-01}])", "element 0, byte 11", kSyntaxError},
    {R"([{"gain":00}])", "element 0, byte 10", kSyntaxError},
    {R"([{"gain":012.5}])", "element 0, byte 13", kSyntaxError},
    {R"([{"gain":1.}])", R"(element 0, member "gain", byte 11)", kSyntaxError},
    {R"([{"gain":-1.}])", R"(element 0, member "gain", byte 12)", kSyntaxError},
    {R"([{"gain":1.e3}])", R"(element 0, member "gain", byte 11)", kSyntaxError},
    {R"([{"gain":.5}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":-.5}])", R"(element 0, member "gain", byte 10)", kSyntaxError},
    {R"([{"gain":.}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":1.2.3}])", "element 0, byte 12", kSyntaxError},
    {R"([{"gain":1..2}])", R"(element 0, member "gain", byte 11)", kSyntaxError},
    {R"([{"gain":1e}])", R"(element 0, member "gain", byte 11)", kSyntaxError},
    {R"([{"gain":1E}])", R"(element 0, member "gain", byte 11)", kSyntaxError},
    {R"([{"gain":1e+}])", R"(element 0, member "gain", byte 12)", kSyntaxError},
    {R"([{"gain":1E-}])", R"(element 0, member "gain", byte 12)", kSyntaxError},
    {R"([{"gain":1e+-1}])", R"(element 0, member "gain", byte 12)", kSyntaxError},
    {R"([{"gain":1e1.5}])", "element 0, byte 12", kSyntaxError},
    {R"([{"gain":1e1e1}])", "element 0, byte 12", kSyntaxError},
    {R"([{"gain":e1}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":0x1F}])", "element 0, byte 10", kSyntaxError},
    {R"([{"gain":0b1}])", "element 0, byte 10", kSyntaxError},
    {R"([{"gain":0o7}])", "element 0, byte 10", kSyntaxError},
    {R"([{"gain":1_000}])", "element 0, byte 10", kSyntaxError},
    {R"([{"gain":1 000}])", "element 0, byte 11", kSyntaxError},
    {R"([{"gain":1'000}])", "element 0, byte 10", kSyntaxError},
    {R"([{"gain":0,5}])", "element 0, byte 11", kSyntaxError},
    {R"([{"gain":1,5}])", "element 0, byte 11", kSyntaxError},
    {R"([{"gain":1.0f}])", "element 0, byte 13", kSyntaxError},
    {R"([{"gain":1.0L}])", "element 0, byte 12", kSyntaxError},
    {R"([{"gain":1%}])", "element 0, byte 10", kSyntaxError},
    {R"([{"gain":-6dB}])", "element 0, byte 11", kSyntaxError},
    {"[{\"gain\":\xEF\xBC\x91}]", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {"[{\"gain\":1\xC2\xBD}]", "element 0, byte 10", kSyntaxError},
    {"[{\"gain\":\xE2\x88\x92"
     "1}]",
     R"(element 0, member "gain", byte 9)", kSyntaxError},
};

TEST(PatchFileValueTest, NumbersThatJsonDoesNotKnow) {
  expectErrors(kNumbersThatJsonDoesNotKnow);
}

constexpr BadPatch kCommentsAndOtherLanguages[] = {
    {"// a patch\n[]", "byte 0", kSyntaxError},
    {"/* a patch */[]", "byte 0", kSyntaxError},
    {"# a patch\n[]", "byte 0", kSyntaxError},
    {"-- a patch\n[]", "byte 1", kSyntaxError},
    {"[]// a patch", "byte 2", kSyntaxError},
    {"[]/* a patch */", "byte 2", kSyntaxError},
    {"[/**/]", "byte 1", kSyntaxError},
    {R"([{"gain":/**/1}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":1/**/}])", "element 0, byte 10", kSyntaxError},
    {"<patch></patch>", "byte 0", kSyntaxError},
    {"- gain: 1.0", "byte 1", kSyntaxError},
    {"gain = 1.0", "byte 0", kSyntaxError},
    {"{gain: 1}", "byte 0", "expected an array of routes, found an object"},
    {"(null)", "byte 0", kSyntaxError},
    {"['gain']", "byte 1", kSyntaxError},
    {R"([{"gain":'1'}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":`1`}])", R"(element 0, member "gain", byte 9)", kSyntaxError},
    {R"([{"gain":"""1"""}])", "element 0, byte 13", kSyntaxError},
    {"[...]", "byte 1", kSyntaxError},
};

TEST(PatchFileValueTest, CommentsAndOtherLanguages) {
  expectErrors(kCommentsAndOtherLanguages);
}

// Numbers beyond a double are judged by their place in the patch, like any other number.
constexpr BadPatch kNumbersBeyondADouble[] = {
    {"1e400", "byte 0", "expected an array of routes, found a number"},
    {"[1e400]", "element 0, byte 1", "expected an object, found a number"},
    {"[-1e400]", "element 0, byte 1", "expected an object, found a number"},
    {R"([{"gain":1e309}])", R"(element 0, member "inputChannel", byte 1)", "missing"},
    {R"([{"inputChannel":1e400}])", R"(element 0, member "inputChannel", byte 17)",
     "integer out of range for 64 bits"},
    {R"([{"inputChannel":0,"outputChannel":0,"gain":-1e99999999999999999999}])",
     R"(element 0, member "gain", byte 44)", "number out of range for a 32-bit float"},
    {R"([{"inputChannel":0,"outputChannel":0,"gain":1,"active":1e400}])",
     R"(element 0, member "active", byte 55)", "expected true or false, found a number"},
    {R"([{"gain":1e400.5}])", "element 0, byte 14", kSyntaxError},
    {R"([{"gain":01e400}])", "element 0, byte 14", kSyntaxError},
    {R"([{"gain":1e400e1}])", "element 0, byte 14", kSyntaxError},
};

TEST(PatchFileValueTest, NumbersBeyondADouble) {
  expectErrors(kNumbersBeyondADouble);
}

TEST(PatchFileValueTest, BehindANumberOfAThousandDigits) {
  const std::string digits(1000, '7');
  expectError(R"([{"note":)" + digits + "x}]", "element 0, byte 1009", kSyntaxError);
  expectError(R"([{"note":)" + digits + ".}]", "element 0, byte 1010", kSyntaxError);
  expectError(R"([{"note":)" + digits + R"(,"gain":1}])", R"(element 0, member "inputChannel", byte 1)",
              "missing");
  expectError(R"([{"inputChannel":)" + digits + R"(,"outputChannel":"x"}])",
              R"(element 0, member "inputChannel", byte 17)", "integer out of range for 64 bits");
  expectError(R"([{"note":0)" + digits + "}]", "element 0, byte 1009", kSyntaxError);
}

}  // namespace
}  // namespace tolvane::test
