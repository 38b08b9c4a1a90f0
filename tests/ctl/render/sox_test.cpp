// tolvanectl render compared with sox remix, on recordings of spoken channel names.
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

constexpr const char* kRecordings = "/usr/share/sounds/alsa/";

class RenderBesideSox : public testing::Test {
 protected:
  void SetUp() override {
    // Eight 16-bit channels; in each a voice speaks the channel's name.
    std::string line = "cd " + std::string(kRecordings) + " && sox -M";
    for (const char* name : {"Front_Left", "Front_Right", "Rear_Left", "Rear_Right", "Front_Center",
                             "Rear_Center", "Side_Left", "Side_Right"}) {
      line += " " + std::string(name) + ".wav";
    }
    ASSERT_EQ(runShell(line + " " + (folder_ / "in.wav")), 0) << "sox and alsa-utils are needed";
  }

  void compare(const std::vector<PatchConnection>& routes, const std::string& remix, double tolerance) const {
    ASSERT_EQ(runShell("sox -D " + (folder_ / "in.wav") + " -e floating-point -b 32 " +
                       (folder_ / "sox.wav") + " remix " + remix),
              0);
    writePatch(folder_ / "patch.json", routes);
    const Finished run =
        runProgram({"render", "--patch", folder_ / "patch.json", folder_ / "in.wav", folder_ / "out.wav"});
    ASSERT_EQ(run.status, 0) << run.err;
    const Sound ours = readSound(folder_ / "out.wav");
    const Sound theirs = readSound(folder_ / "sox.wav");
    ASSERT_EQ(ours.channels, theirs.channels);
    ASSERT_EQ(ours.sampleRateHz, theirs.sampleRateHz);
    ASSERT_EQ(ours.samples.size(), theirs.samples.size());
    double worst = 0.0;
    double loudest = 0.0;
    for (std::size_t i = 0; i < ours.samples.size(); ++i) {
      worst = std::max(
          worst, std::fabs(static_cast<double>(ours.samples[i]) - static_cast<double>(theirs.samples[i])));
      loudest = std::max(loudest, std::fabs(static_cast<double>(ours.samples[i])));
    }
    EXPECT_LE(worst, tolerance);
    EXPECT_GT(loudest, 0.05);  // the channel is not silent
  }

  TemporaryFolder folder_;
};

TEST_F(RenderBesideSox, IsTheSameToTheBitWhereBothAreExact) {
  // Swapped channels, and halves and quarters of 16-bit samples: neither program rounds.
  compare({{1, 0, 1.0F, true}, {0, 1, 1.0F, true}, {7, 2, 1.0F, true}}, "2 1 8", 0.0);
  compare({{0, 0, 0.5F, true}, {1, 0, 0.25F, true}, {4, 1, 0.5F, true}, {2, 1, 0.125F, true}},
          "1v0.5,2v0.25 5v0.5,3v0.125", 0.0);
}

TEST_F(RenderBesideSox, IsTheSameWithinSoxsRoundingWhereItRounds) {
  // sox rounds each mix to a 32-bit integer and then to a float's 24 bits. tolvanectl rounds each product and
  // sum to a float. The signals stay below 1, so the results differ by a few units of 2^-24 at most.
  compare({{0, 0, 0.3F, true},
           {1, 0, 0.3F, true},
           {4, 0, 0.17F, true},
           {5, 1, 0.7071068F, true},
           {6, 1, 0.1F, true}},
          "1v0.3,2v0.3,5v0.17 6v0.7071068,7v0.1", 4.0 / 16777216.0);
}

}  // namespace
}  // namespace tolvane::test
