// tolvanectl run --buffer, --rate and --periods, on devices that accept the setting and on devices that do
// not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/run/notes.h"
#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;

class RunSettings : public testing::Test {
 protected:
  RunSettings() { writePatch(patch_, {{0, 0, 1.0F, true}}); }

  [[nodiscard]] Finished run(const std::string& device, const std::string& frames) const {
    return runProgram({"run", "--patch", patch_, "--device", device, "--buffer", frames, "--seconds", "1"});
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
};

/// The first cycle's frames from the callback's trace; -1 if there is no trace.
long firstCycleFrames(const std::string& out) {
  const std::string label = "[IOProc] frameCount=";
  const std::size_t at = out.find(label);
  return at == std::string::npos ? -1 : std::stol(out.substr(at + label.size()));
}

TEST_F(RunSettings, ABufferIsWhatTheVirtualDeviceRunsWith) {
  const Finished run = this->run("Tolvane Virtual Device", "1024");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, runNotes(run, "Tolvane Virtual Device"));
  EXPECT_EQ(firstCycleFrames(run.out), 1024);
}

TEST_F(RunSettings, ABufferIsWhatACardOfTheServerRunsWith) {
  const PipeWireServer server({{.name = "Card", .inputs = 2, .outputs = 2, .cardId = 76}});
  const Finished run = this->run("Card", "128");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, runNotes(run, "Card"));
  EXPECT_EQ(firstCycleFrames(run.out), 128);
}

TEST_F(RunSettings, ABufferOutOfTheCardsRangeIsSaidWithTheRange) {
  const PipeWireServer server({{.name = "Card", .inputs = 2, .outputs = 2, .cardId = 76}});
  const Finished run = this->run("Card", "16");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: Card: a buffer of 16 frames is out of its range, 32 to 2048 frames\n");
  EXPECT_EQ(run.out, "");
}

TEST_F(RunSettings, ABufferCannotBeSetWhereTheServerForcesOne) {
  const PipeWireServer server({{.name = "Card", .inputs = 2, .outputs = 2, .cardId = 76}});
  PipeWireClient client;
  client.setSetting("clock.force-quantum", "512");
  const Finished run = this->run("Card", "128");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: Card: its buffer size cannot be set, and is 512 frames\n");
}

TEST_F(RunSettings, ARateThatTheDeviceCannotHaveIsAFailure) {
  const Finished run = runProgram(
      {"run", "--patch", patch_, "--device", "Tolvane Virtual Device", "--rate", "44100", "--seconds", "1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: Tolvane Virtual Device: its sample rate cannot be set, and is 48000 Hz\n");
  EXPECT_EQ(run.out, "");
}

TEST_F(RunSettings, PeriodsOfADeviceWithoutHardwareAreAFailure) {
  const PipeWireServer server({{.name = "Card", .inputs = 2, .outputs = 2, .cardId = 76}});
  const Finished run =
      runProgram({"run", "--patch", patch_, "--device", "Card", "--periods", "2", "--seconds", "1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: Card: its number of periods cannot be set\n");
}

TEST_F(RunSettings, NumbersThatNoDeviceCanHaveAreWrongUsage) {
  for (const auto& [option, value] : {std::pair("--rate", "0"), std::pair("--rate", "44.1k"),
                                      std::pair("--periods", "1"), std::pair("--periods", "0x10")}) {
    EXPECT_EQ(runProgram({"run", "--patch", patch_, option, value}).status, 2) << option << ' ' << value;
  }
}

}  // namespace
}  // namespace tolvane::test
