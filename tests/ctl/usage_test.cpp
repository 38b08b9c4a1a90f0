// Arguments: help, version, and messages for invalid ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Usage, VersionIsOneLineOnStandardOutput) {
  const Finished run = runProgram({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "tolvanectl 0.1.0\n");
  EXPECT_EQ(run.err, "");
}

TEST(Usage, HelpNamesEveryCommandOnStandardOutput) {
  const Finished run = runProgram({"--help"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  for (const char* command : {"devices", "check", "render", "run", "aggregate"})
    EXPECT_THAT(run.out, HasSubstr(command));
}

TEST(Usage, HelpOfACommandNamesItsOptions) {
  const Finished run = runProgram({"run", "--help"});
  EXPECT_EQ(run.status, 0);
  for (const char* option : {"--patch", "--device", "--buffer", "--watch", "--meters", "--seconds"}) {
    EXPECT_THAT(run.out, HasSubstr(option));
  }
}

class Nonsense : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(Nonsense, IsAUsageErrorOnStandardError) {
  const Finished run = runProgram(GetParam());
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, StartsWith("tolvanectl: "));
  EXPECT_THAT(run.err, HasSubstr("try 'tolvanectl --help'"));
}

using Words = std::vector<std::string>;

TEST(Usage, WhatIsNoCommandIsNamedWithThoseThatAre) {
  const Finished run = runProgram({"bogus"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "tolvanectl: \"bogus\" is no command; the commands are devices, check, render, run, soak, "
            "aggregate, ctl\n"
            "tolvanectl: try 'tolvanectl --help'\n");
  EXPECT_THAT(runProgram({"aggregate", "rename"}).err,
              StartsWith("tolvanectl: \"rename\" is no command; the commands are list, create, delete\n"));
  EXPECT_THAT(runProgram({"--bogus"}).err, StartsWith("tolvanectl: \"--bogus\" is no command; "));
}

TEST(Usage, WithoutACommandTheCommandsAreNamed) {
  EXPECT_THAT(runProgram({}).err,
              StartsWith("tolvanectl: a command is missing; the commands are devices, check, render, run, "
                         "soak, aggregate, ctl\n"));
  EXPECT_THAT(runProgram({"aggregate"}).err,
              StartsWith("tolvanectl: a command is missing; the commands are list, create, delete\n"));
}

TEST(Usage, NumbersAreDecimalWhateverTheyBeginWith) {
  const TemporaryFolder folder;
  writePatch(folder / "p.json", {});
  writeSound(folder / "in.wav", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F}});
  const Finished run = runProgram({"render", "--patch", folder / "p.json", "--outputs", "010", "--buffer",
                                   "0064", folder / "in.wav", folder / "out.wav"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(readSound(folder / "out.wav").channels, 10);
}

TEST(Usage, NumbersThatCannotBeAreSaidWithThoseThatCan) {
  EXPECT_THAT(runProgram({"render", "--patch", "p", "--outputs", "0x10", "in", "out"}).err,
              StartsWith("tolvanectl: --outputs: \"0x10\" is not a whole number from 1 to 1024\n"));
  EXPECT_THAT(runProgram({"run", "--patch", "p", "--buffer", "65537"}).err,
              StartsWith("tolvanectl: --buffer: \"65537\" is not a whole number from 1 to 65536\n"));
  EXPECT_THAT(runProgram({"run", "--patch", "p", "--seconds", "9e9"}).err,
              StartsWith("tolvanectl: --seconds: \"9e9\" is not a number of seconds above 0 and up to "
                         "1000000000\n"));
  for (const char* const wait : {"", "-1", "0x10", "inf", "nan", "1 ", "1e10"}) {
    EXPECT_THAT(runProgram({"devices", "--wait", wait}).err,
                StartsWith("tolvanectl: --wait: \"" + std::string(wait) +
                           "\" is not a number of seconds from 0 to 1000000000\n"));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Usage, Nonsense,
    testing::Values(Words{}, Words{"play"}, Words{"devices", "--xml"}, Words{"devices", "extra"},
                    Words{"check"}, Words{"render"}, Words{"render", "in.wav", "out.wav"},
                    Words{"render", "--patch", "p.json", "in.wav"},
                    Words{"render", "--patch", "p.json", "in.wav", "-"},
                    Words{"render", "--patch", "p.json", "in.wav", "out.wav", "third.wav"},
                    Words{"render", "--patch", "p.json", "--buffer", "0", "in.wav", "out.wav"},
                    Words{"render", "--patch", "p.json", "--buffer", "ten", "in.wav", "out.wav"},
                    Words{"render", "--patch", "p.json", "--buffer", "65537", "in.wav", "out.wav"},
                    Words{"render", "--patch", "p.json", "--outputs", "0", "in.wav", "out.wav"},
                    Words{"render", "--patch", "p.json", "--outputs", "1025", "in.wav", "out.wav"},
                    Words{"render", "--patch", "p.json", "--outputs", "-1", "in.wav", "out.wav"},
                    Words{"devices", "--watch", "2"}, Words{"devices", "--watch", "--channels"},
                    Words{"devices", "--channels", "a", "b"}, Words{"devices", "--channels", ""},
                    Words{"check", "p.json", "--device", ""}, Words{"run"}, Words{"run", "--patch"},
                    Words{"run", "--patch", "p.json", "--buffer"},
                    Words{"run", "--patch", "p.json", "--buffer", "0"},
                    Words{"run", "--patch", "p.json", "--buffer", "-256"},
                    Words{"run", "--patch", "p.json", "--buffer", "2.5"},
                    Words{"run", "--patch", "p.json", "--buffer", "65537"},
                    Words{"run", "--patch", "p.json", "--seconds", "0"},
                    Words{"run", "--patch", "p.json", "--seconds", "-1"},
                    Words{"run", "--patch", "p.json", "--seconds", "nan"},
                    Words{"run", "--patch", "p.json", "--seconds", "1,5"},
                    Words{"run", "--patch", "p.json", "--seconds", "inf"},
                    Words{"run", "--patch", "p.json", "--seconds", "0x10"},
                    Words{"run", "--patch", "p.json", "--seconds", "1s"},
                    Words{"run", "--patch", "p.json", "--seconds", ""},
                    Words{"render", "--patch", "p.json", "--buffer", "0x10", "in.wav", "out.wav"},
                    Words{"render", "--patch", "p.json", "--buffer", "+5", "in.wav", "out.wav"},
                    Words{"render", "--patch", "p.json", "--buffer", "", "in.wav", "out.wav"},
                    Words{"render", "--patch", "p.json", "--buffer", "18446744073709551617", "i", "o"}));

INSTANTIATE_TEST_SUITE_P(Aggregates, Nonsense,
                         testing::Values(Words{"aggregate"}, Words{"aggregate", "rename", "a", "b"},
                                         Words{"aggregate", "list", "extra"}, Words{"aggregate", "create"},
                                         Words{"aggregate", "create", "Stage"}, Words{"aggregate", "delete"},
                                         Words{"aggregate", "delete", "a", "b"}));

}  // namespace
}  // namespace tolvane::test
