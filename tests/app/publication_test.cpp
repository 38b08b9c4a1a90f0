// Route edits while the engine runs. They are published at once, never by a restart.
#include <algorithm>
#include <array>

#include "app/window_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A buffer list with one interleaved buffer.
template <std::size_t kSamples>
AudioBufferList listOf(std::array<float, kSamples>& samples, UInt32 channels) {
  AudioBufferList list{};
  list.mNumberBuffers = 1;
  list.mBuffers[0] = {channels, static_cast<UInt32>(sizeof samples), samples.data()};
  return list;
}

class PublicationTest : public WindowTest {
 protected:
  PublicationTest() {
    hal.devices = {scriptedDevice(7, "Box", {2}, {8})};
    openQuietly();
    press("startStopTapped");
    statusTexts();
    deviceCalls();
  }

  /// Runs one cycle of two frames with inputs (1, 2) and (3, 4). Returns the 16 output samples.
  std::array<float, 16> cycle() const {
    std::array<float, 4> input{1.0F, 2.0F, 3.0F, 4.0F};
    std::array<float, 16> output{};
    output.fill(99.0F);
    const AudioBufferList inputs = listOf(input, 2);
    AudioBufferList outputs = listOf(output, 8);
    EXPECT_TRUE(hal.runCycle(&inputs, &outputs));
    return output;
  }
};

TEST_F(PublicationTest, EveryEditIsPublishedAndTold) {
  clickCell(0, 3);
  EXPECT_EQ(publishedEntries().size(), 1U);
  EXPECT_THAT(statusTexts(), ElementsAre("● Live  •  1 route(s) active"));
  addRoute("2", "6", "0.5");
  EXPECT_EQ(publishedEntries().size(), 2U);
  EXPECT_THAT(statusTexts(), ElementsAre("● Live  •  2 route(s) active"));
  clickTableRow(0);
  press("removeConnection");
  ASSERT_EQ(publishedEntries().size(), 1U);
  EXPECT_EQ(publishedEntries()[0].src, 1);
  EXPECT_EQ(publishedEntries()[0].dst, 5);
  EXPECT_EQ(publishedEntries()[0].gain, 0.5F);
  EXPECT_THAT(statusTexts(), ElementsAre("● Live  •  1 route(s) active"));
  press("clearConnections");
  EXPECT_THAT(publishedEntries(), IsEmpty());
  EXPECT_THAT(statusTexts(), ElementsAre("● Live  •  0 route(s) active"));
}

TEST_F(PublicationTest, NoEditTouchesTheDevice) {
  clickCell(0, 3);
  addRoute("2", "6", "0.5");
  press("presetThru12");
  press("clearConnections");
  EXPECT_THAT(hal.takeCalls(), IsEmpty());
  EXPECT_TRUE(CoreAudioEngine::shared().isRunning());
}

TEST_F(PublicationTest, TheNextCycleRoutesByTheEdit) {
  EXPECT_EQ(cycle(), (std::array<float, 16>{}));
  clickCell(0, 3);
  addRoute("2", "6", "0.5");
  EXPECT_EQ(cycle(), (std::array<float, 16>{0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 3, 0, 2, 0, 0}));
  clickCell(0, 3);
  EXPECT_EQ(cycle(), (std::array<float, 16>{0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0}));
}

TEST_F(PublicationTest, EachEditFlipsTheLiveBuffer) {
  const IOProcContext* const context = CoreAudioEngine::shared().contextPtr();
  const auto before = context->activeBuf;
  clickCell(0, 3);
  EXPECT_EQ(context->activeBuf, 1 - before);
  clickCell(0, 4);
  EXPECT_EQ(context->activeBuf, before);
  EXPECT_EQ(CoreAudioEngine::shared().contextPtr(), context);
}

TEST_F(PublicationTest, MoreRoutesThanSoundAreStillCounted) {
  for (int output = 1; output <= 70; ++output) addRoute("1", std::to_string(output), "1.0");
  EXPECT_EQ(publishedEntries().size(), 64U);
  EXPECT_EQ(publishedEntries().back().dst, 63);
  EXPECT_EQ(statusText(), "● Live  •  70 route(s) active");
  EXPECT_EQ(routes().size(), 70U);
}

TEST_F(PublicationTest, AnEditIsPublishedBeforeItIsShown) {
  // The table's model is reset after the publication, and before the matrix shows the new routes.
  auto& table = control<ConnectionsTableView>("connectionsTableView");
  std::size_t publishedAtReload = 0;
  std::size_t litAtReload = 99;
  QObject::connect(table.model(), &QAbstractItemModel::modelReset, &table, [&] {
    publishedAtReload = publishedEntries().size();
    litAtReload = control<PatchMatrixView>("patchMatrixView").connections.size();
  });
  clickCell(0, 3);
  EXPECT_EQ(publishedAtReload, 1U);
  EXPECT_EQ(litAtReload, 0U);
}

TEST_F(PublicationTest, AChannelBeyond32BitsEndsTheProcess) {
  EXPECT_DEATH(
      {
        control<QLineEdit>("inputChannelField").setText("2147483649");
        controller->addConnection();
      },
      "tolvane: fatal: ");
}

}  // namespace
}  // namespace tolvane::test
