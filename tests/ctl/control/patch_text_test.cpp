// A patch file is written back with everything in it that is not ours.
#include "ctl/control/patch_text.h"

#include <gtest/gtest.h>

#include "core/patch/patch_file.h"

namespace tolvane::ctl::control {
namespace {

PatchText read(const std::string& text) {
  return {text, decodePatch(text).value()};
}

constexpr const char* kOurs = R"([{"inputChannel":0,"outputChannel":1,"gain":0.5,"active":true}])";

/// A file as a person writes it: white space, odd numbers, unknown members of every kind.
const std::string kForeign =
    "\xEF\xBB\xBF [\n"
    "  { \"note\": \"a \\\"]}, {[\", \"inputChannel\": 0, \"outputChannel\": 1.0,\n"
    "    \"gain\": 0.50, \"active\": true, \"big\": 1e999, \"deep\": [[{\"gain\": \"7\"}]] } ,\n"
    "  {\"\\u0067ain\":1,\"active\":false,\"inputChannel\":2,\"outputChannel\":3}\n"
    "]\n";

TEST(PatchText, UnchangedRoutesGiveTheTextByteForByte) {
  for (const std::string& text :
       {std::string(kOurs), kForeign, std::string("[]"), std::string(" [ \n ] "),
        std::string("[ {\"inputChannel\":0,\"outputChannel\":1,\"gain\":1,\"gain\":2,"
                    "\"active\":true} ]")}) {
    const PatchText patch = read(text);
    EXPECT_EQ(patch.with(patch.routes()), text);
  }
}

TEST(PatchText, OnlyTheChangedValuesDiffer) {
  const PatchText patch = read(kForeign);
  auto routes = patch.routes();
  routes[0].connection.gain = 0.25F;
  routes[1].connection.active = true;
  std::string expected = kForeign;
  expected.replace(expected.find("0.50"), 4, "0.25");
  expected.replace(expected.find("false"), 5, "true");
  EXPECT_EQ(patch.with(routes), expected);
}

TEST(PatchText, ARemovedRouteGoesAndANewOneComes) {
  const PatchText patch = read(kForeign);
  auto routes = patch.routes();
  routes.erase(routes.begin());
  routes.push_back({{4, 5, 0.1F, true}, ""});
  EXPECT_EQ(patch.with(routes),
            "\xEF\xBB\xBF [\n"
            "  {\"\\u0067ain\":1,\"active\":false,\"inputChannel\":2,\"outputChannel\":3},\n"
            "  {\"inputChannel\":4,\"outputChannel\":5,\"gain\":0.1,\"active\":true}\n"
            "]\n");
  EXPECT_EQ(patch.with({}), "\xEF\xBB\xBF []\n");
}

TEST(PatchText, WhatIsWrittenReadsBackAsTheSameRoutes) {
  const PatchText patch = read(kForeign);
  const std::vector<Route> routes = {{{9, 9, 1e-7F, true}, "Vox \"1\" \xC3\xA9"},
                                     {{0, 1, -0.0F, false}, "Gtr"},
                                     {{9, 9, 3.0F, false}, ""},
                                     {{-1, 4, 1.0F, true}, ""}};
  const std::string text = patch.with(routes);
  EXPECT_EQ(read(text).routes(), routes) << text;
  EXPECT_NE(text.find("1e999"), std::string::npos);
}

TEST(PatchText, ALabelIsAMemberOfItsOwn) {
  const PatchText patch =
      read(R"([{"inputChannel":0,"outputChannel":1,"gain":1.0,"active":true,"label":"A"}])");
  auto routes = patch.routes();
  EXPECT_EQ(routes[0].label, "A");
  routes[0].label = "B";
  EXPECT_EQ(patch.with(routes),
            R"([{"inputChannel":0,"outputChannel":1,"gain":1.0,"active":true,"label":"B"}])");
  const PatchText without = read(kOurs);
  routes = without.routes();
  routes[0].label = "C";
  EXPECT_EQ(without.with(routes),
            R"([{"inputChannel":0,"outputChannel":1,"gain":0.5,"active":true,"label":"C"}])");
}

TEST(PatchText, AMemberLabelThatIsNoTextIsNotOurs) {
  const std::string text = R"([{"label":7,"inputChannel":0,"outputChannel":1,"gain":1.0,"active":true}])";
  const PatchText patch = read(text);
  EXPECT_EQ(patch.routes()[0].label, "");
  EXPECT_EQ(patch.with(patch.routes()), text);
}

TEST(PatchText, RoutesOfOnePairKeepTheirOrder) {
  const std::string text = R"([{"a":1,"inputChannel":0,"outputChannel":0,"gain":1.0,"active":true},)"
                           R"({"b":2,"inputChannel":0,"outputChannel":0,"gain":2.0,"active":true}])";
  const PatchText patch = read(text);
  auto routes = patch.routes();
  routes[1].connection.gain = 3.0F;
  std::string expected = text;
  expected.replace(expected.find("2.0"), 3, "3.0");
  EXPECT_EQ(patch.with(routes), expected);
}

TEST(PatchText, AnEmptyPatchTakesNewRoutes) {
  EXPECT_EQ(PatchText().with({}), "[]");
  EXPECT_EQ(PatchText().with(std::vector<Route>{{{0, 1, 0.5F, true}, ""}}), kOurs);
}

}  // namespace
}  // namespace tolvane::ctl::control
