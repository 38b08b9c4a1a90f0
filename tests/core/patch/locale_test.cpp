// Numbers in patch files are the same in every locale of the process.
#include <clocale>
#include <cstdlib>
#include <locale>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/patch/bad_patch.h"
#include "core/patch/patch_text.h"

namespace tolvane::test {
namespace {

constexpr auto kText = R"([{"inputChannel":12345678,"outputChannel":-1,"gain":1234.5,"active":true},)"
                       R"({"inputChannel":0,"outputChannel":0,"gain":3.355445e+07,"active":false}])";

const std::vector<PatchConnection> kRoutes{{12345678, -1, 1234.5F, true}, {0, 0, 33554448.0F, false}};

void expectPlainNumbers() {
  const auto decoded = decodePatch(kText);
  ASSERT_TRUE(decoded) << decoded.error().message();
  EXPECT_EQ(decoded.value(), kRoutes);
  const auto encoded = encodePatch(kRoutes);
  ASSERT_TRUE(encoded) << encoded.error().message();
  EXPECT_EQ(encoded.value(), kText);
  expectError(patchWithGain("0,5"), "element 0, byte 46", kSyntaxError);
  expectError(patchWithGain("1.5e400"), R"(element 0, member "gain", byte 44)",
              "number out of range for a 32-bit float");
}

class PatchFileLocaleTest : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override { setenv("LOCPATH", TOLVANE_TEST_LOCALES, 1); }
  void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

TEST_P(PatchFileLocaleTest, NumbersAreReadAndWrittenAsInTheCLocale) {
  ASSERT_NE(std::setlocale(LC_ALL, GetParam()), nullptr);
  const std::string point = std::localeconv()->decimal_point;
  ASSERT_NE(point, ".");
  expectPlainNumbers();
  EXPECT_EQ(std::localeconv()->decimal_point, point);
}

// The decimal separator of German is a comma, that of Pashto a character of two bytes.
INSTANTIATE_TEST_SUITE_P(Languages, PatchFileLocaleTest, testing::Values("de_DE.UTF-8", "ps_AF.UTF-8"),
                         [](const auto& language) { return std::string(language.param).substr(0, 2); });

class CommaNumbers : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(PatchFileStreamLocaleTest, NumbersDoNotFollowTheStreams) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
  expectPlainNumbers();
  std::locale::global(before);
}

}  // namespace
}  // namespace tolvane::test
