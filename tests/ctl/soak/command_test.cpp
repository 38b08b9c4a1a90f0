// tolvanectl soak: what it prints and writes, and how it ends.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string kDevice = "Tolvane Virtual Device";

TEST(Soak, AtFullSpeedRunsHalfAMinuteAndWritesAPage) {
  const TemporaryFolder folder;
  const Finished soak = runProgram({"soak", "--device", kDevice, "--full-speed", "--minutes", "0.5",
                                    "--edits-per-minute", "6000", "--report", folder / "soak.html"});
  EXPECT_EQ(soak.status, 0) << soak.err;
  EXPECT_EQ(soak.err, "tolvanectl: soaking " + kDevice + "\n");
  EXPECT_THAT(soak.out, HasSubstr("right, 0 wrong"));
  EXPECT_THAT(soak.out, HasSubstr("right, 0 wrong, 0 missing"));
  EXPECT_THAT(soak.out, HasSubstr("18 inputs, after 512 frames at most, broken 0 times"));
  const std::string page = readBytes(folder / "soak.html");
  EXPECT_THAT(page, testing::StartsWith("<!DOCTYPE html>"));
  EXPECT_THAT(page, testing::EndsWith("</html>\n"));
  EXPECT_THAT(page, HasSubstr("Passed: every sample was right."));
  for (const char* title : {"Callback time", "Lateness of cycles", "Memory", "Descriptors", "Threads"})
    EXPECT_THAT(page, HasSubstr(std::string("aria-label=\"") + title + '"'));
  for (const char* outside : {"src=", "href=", "http:", "https:", "url("})
    EXPECT_THAT(page, Not(HasSubstr(outside)));
}

TEST(Soak, EndsWithASignalAndKeepsItsReport) {
  const TemporaryFolder folder;
  ChildProcess soak({"soak", "--device", kDevice, "--minutes", "100", "--report", folder / "soak.html"});
  ASSERT_TRUE(soak.waitForOut("completed OK"));
  soak.send(SIGINT);
  const Finished finished = soak.finish();
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.out, HasSubstr("samples routed"));
  EXPECT_THAT(folder.names(), ElementsAre("soak.html"));
}

TEST(Soak, SaysAtOnceThatItsReportCannotBeWritten) {
  const TemporaryFolder folder;
  const Finished soak =
      runProgram({"soak", "--device", kDevice, "--report", folder / "missing" + "/soak.html"});
  EXPECT_EQ(soak.status, 1);
  EXPECT_EQ(soak.out, "");
  EXPECT_THAT(soak.err, HasSubstr("No such file or directory"));
}

TEST(Soak, RefusesNumbersThatAreNone) {
  for (const auto& [option, value] :
       {std::pair("--minutes", "0"), std::pair("--minutes", "nan"), std::pair("--edits-per-minute", "-1"),
        std::pair("--edits-per-minute", "1e3")}) {
    const Finished soak = runProgram({"soak", option, value});
    EXPECT_EQ(soak.status, 2) << option << value;
  }
}

}  // namespace
}  // namespace tolvane::test
