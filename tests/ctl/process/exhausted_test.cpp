// With too little memory or too few descriptors, a command fails with one message and leaves no file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;

struct Scarcity {
  const char* name;
  int resource;
  rlim_t limit;
  const char* message;
};

class Exhausted : public testing::TestWithParam<Scarcity> {
 protected:
  Exhausted() {
    writePatch(folder_ / "patch.json", {{0, 0, 1.0F, true}});
    options_.limits = {{GetParam().resource, GetParam().limit}};
    options_.environment = {{"XDG_CONFIG_HOME", folder_.path()}};
  }

  void expectFailure(const std::vector<std::string>& words) const {
    const Finished run = runProgram(words, options_);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, GetParam().message);
    EXPECT_THAT(folder_.names(), ElementsAre("patch.json"));
  }

  TemporaryFolder folder_;
  ChildProcess::Options options_;
};

TEST_P(Exhausted, Devices) {
  expectFailure({"devices"});
}

TEST_P(Exhausted, DevicesWatch) {
  expectFailure({"devices", "--watch"});
}

TEST_P(Exhausted, Run) {
  expectFailure({"run", "--patch", folder_ / "patch.json"});
}

TEST_P(Exhausted, AggregateList) {
  expectFailure({"aggregate", "list"});
}

TEST_P(Exhausted, AggregateCreate) {
  expectFailure({"aggregate", "create", "Stage", "Rack"});
}

TEST_P(Exhausted, NotWhatNeedsNoDevice) {
  EXPECT_EQ(runProgram({"check", folder_ / "patch.json"}, options_).status, 0);
  EXPECT_EQ(runProgram({"--help"}, options_).status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Of, Exhausted,
    testing::Values(Scarcity{"Memory", RLIMIT_AS, 40000 * 1024,
                             "tolvanectl: too little memory is left: the sound systems need 256 MiB\n"},
                    Scarcity{"Descriptors", RLIMIT_NOFILE, 10,
                             "tolvanectl: too few descriptors are left: the sound systems need 64\n"}),
    [](const auto& instance) { return instance.param.name; });

TEST(ExhaustedMemory, LeavesNoHalfOfARendering) {
  const TemporaryFolder folder;
  const TemporaryFolder source;
  writePatch(folder / "patch.json", {{0, 0, 1.0F, true}});
  writeSound(source / "in.wav", {.samples = std::vector<float>(1000, 0.5F)});
  ChildProcess::Options options;
  options.limits = {{RLIMIT_AS, 200'000'000}};  // the blocks for so many channels need more
  const Finished run = runProgram({"render", "--patch", folder / "patch.json", "--outputs", "1024",
                                   "--buffer", "65536", source / "in.wav", folder / "out.wav"},
                                  options);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: out of memory\n");
  EXPECT_THAT(folder.names(), ElementsAre("patch.json"));
}

}  // namespace
}  // namespace tolvane::test
