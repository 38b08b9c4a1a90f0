// tolvanectl check: the routes of patch files, or what is wrong with them.
#include <filesystem>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Check : public testing::Test {
 protected:
  std::string patch(const std::string& name, const std::string& text) const {
    writeText(folder_ / name, text);
    return folder_ / name;
  }
  TemporaryFolder folder_;
};

TEST_F(Check, PrintsTheRoutesOneBased) {
  const std::string path =
      patch("p.json", patchText({{0, 1, 1.0F, true}, {17, 0, 0.5F, false}, {9, 9, 0.1F, true}}));
  const Finished run = runProgram({"check", path});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, path +
                         ":\n"
                         "input  output  gain     dB  active\n"
                         "    1       2   1.0    0.0  yes\n"
                         "   18       1   0.5   -6.0  no\n"
                         "   10      10   0.1  -20.0  yes\n");
}

TEST_F(Check, SaysThatAPatchIsEmpty) {
  const std::string path = patch("empty.json", " [ ] ");
  const Finished run = runProgram({"check", path});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, path + ":\nno routes\n");
}

TEST_F(Check, SaysWhichElementAndMemberIsWrong) {
  const std::string path =
      patch("bad.json", R"([{"inputChannel":0,"outputChannel":0,"gain":1,"active":true},)"
                        R"({"inputChannel":0,"outputChannel":"1","gain":1,"active":true}])");
  const Finished run = runProgram({"check", path});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, StartsWith("tolvanectl: " + path + ": "));
  EXPECT_THAT(run.err, HasSubstr("element 1"));
  EXPECT_THAT(run.err, HasSubstr("\"outputChannel\""));
  EXPECT_THAT(run.err, HasSubstr("byte"));
}

TEST_F(Check, ReadsAllFilesWhateverTheFirstOnesAre) {
  const std::string good = patch("good.json", patchText({{1, 2, 1.0F, true}}));
  const std::string bad = patch("bad.json", "{}");
  const std::string missing = folder_ / "missing.json";
  const Finished run = runProgram({"check", missing, bad, good});
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr("tolvanectl: " + missing + ": No such file or directory\n"));
  EXPECT_THAT(run.err, HasSubstr("tolvanectl: " + bad + ": "));
  EXPECT_EQ(run.out, good + ":\ninput  output  gain   dB  active\n    2       3   1.0  0.0  yes\n");
}

TEST_F(Check, FailsForAFileThatCannotBeRead) {
  const Finished missing = runProgram({"check", folder_ / "missing.json"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "tolvanectl: " + (folder_ / "missing.json") + ": No such file or directory\n");
  const Finished directory = runProgram({"check", folder_.path()});
  EXPECT_EQ(directory.status, 1);
  EXPECT_EQ(directory.err, "tolvanectl: " + folder_.path() + ": Is a directory\n");
}

TEST_F(Check, ReadsNamesThatLookLikeOptions) {
  writeText(folder_ / "--json", "[]");
  ChildProcess::Options options;
  options.folder = folder_.path();
  const Finished run = runProgram({"check", "--", "--json"}, options);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "--json:\nno routes\n");
}

TEST_F(Check, KeepsChannelsThatNoDeviceHasWhileTheyAreInactive) {
  constexpr auto kHuge = std::numeric_limits<std::int64_t>::max();
  const std::string path = patch("p.json", patchText({{kHuge, -1, -1.0F, false}}));
  const Finished run = runProgram({"check", path});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("9223372036854775808       0  -1.0  0.0  no\n"));
}

TEST_F(Check, RefusesAnActiveRouteThatNoDeviceCanHave) {
  const std::string path = patch("p.json", patchText({{0, 0, 1.0F, true}, {0, 2147483648, 1.0F, true}}));
  const Finished run = runProgram({"check", path});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err,
            "tolvanectl: " + path +
                ": element 1, member \"outputChannel\": the channel number 2147483648 of an active route "
                "is beyond 32 bits\n");
}

TEST_F(Check, RefusesAnActiveRouteOfAChannelThatNoDeviceCanHave) {
  const auto expectRefused = [this](const PatchConnection& route, const std::string& member,
                                    const std::string& channel) {
    // The route is refused even after more active routes than can sound.
    std::vector<PatchConnection> routes(70, {0, 0, 1.0F, true});
    routes.push_back(route);
    const std::string path = patch("p.json", patchText(routes));
    const Finished run = runProgram({"check", path});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "tolvanectl: " + path + ": element 70, member \"" + member +
                           "\": no device can have the channel number " + channel + "\n");
  };
  expectRefused({-1, 0, 1.0F, true}, "inputChannel", "-1");
  expectRefused({0, -7, 1.0F, true}, "outputChannel", "-7");
  expectRefused({2147483647, 0, 1.0F, true}, "inputChannel", "2147483647");
  expectRefused({0, 4294967296, 1.0F, true}, "outputChannel", "4294967296");
  const std::string path = patch("p.json", patchText({{2147483646, 0, 1.0F, true}, {-1, -1, 1.0F, false}}));
  EXPECT_EQ(runProgram({"check", path}).status, 0);
}

TEST_F(Check, NotesRoutesThatAreNotHeard) {
  const std::string path = patch("p.json", patchText(std::vector<PatchConnection>(70, {0, 0, 1.0F, true})));
  const Finished run = runProgram({"check", path});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err,
            "tolvanectl: " + path + ": 70 routes are active, but only the first 64 of them are heard\n");
}

TEST_F(Check, GivesTheSameBytesInEveryLocale) {
  const std::string path = patch("p.json", patchText({{0, 0, 0.25F, true}, {1, 1, 1234.5F, true}}));
  const std::string expected = runProgram({"check", path}).out;
  EXPECT_THAT(expected, HasSubstr("  0.25  "));
  for (const char* locale : {"C", "C.UTF-8", "de_DE.UTF-8"}) {
    ChildProcess::Options options;
    options.environment = {{"LC_ALL", locale}, {"LANG", locale}};
    EXPECT_EQ(runProgram({"check", path}, options).out, expected) << locale;
  }
}

TEST_F(Check, FailsWhenStandardOutputCannotBeWritten) {
  const std::string path = patch("p.json", "[]");
  EXPECT_EQ(
      runShell(std::string(TOLVANECTL_PATH) + " check " + path + " > /dev/full 2> " + (folder_ / "err")), 1);
  EXPECT_EQ(readBytes(folder_ / "err"), "tolvanectl: standard output cannot be written\n");
}

TEST_F(Check, AFileLargerThanAnyPatchIsRefusedUnread) {
  writeText(folder_ / "huge", "[");
  std::filesystem::resize_file(folder_ / "huge", std::uintmax_t{10} << 30U);
  const Finished run = runProgram({"check", folder_ / "huge"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "huge") + ": larger than 256 MiB, so not a patch file\n");
}

TEST_F(Check, ADeviceIsReadLikeAFile) {
  const Finished empty = runProgram({"check", "/dev/null"});
  EXPECT_EQ(empty.status, 3);
  EXPECT_EQ(empty.err, "tolvanectl: /dev/null: byte 0: there is no text\n");
  const Finished endless = runProgram({"check", "/dev/zero"});
  EXPECT_EQ(endless.status, 1);
  EXPECT_EQ(endless.err, "tolvanectl: /dev/zero: larger than 256 MiB, so not a patch file\n");
}

}  // namespace
}  // namespace tolvane::test
