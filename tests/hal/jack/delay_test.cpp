#include <algorithm>

#include "hal/jack/routing_fixture.h"

namespace tolvane::test {
namespace {

class JackDelay : public JackRoutingFixture {
 protected:
  static constexpr std::uint64_t kImpulseSpacing = 2000;

  static float impulse(std::size_t channel, std::uint64_t frame) noexcept {
    return channel == 0 && frame % kImpulseSpacing == 0 ? 1.0F : 0.0F;
  }

  static std::vector<std::size_t> impulses(const std::vector<float>& samples) {
    std::vector<std::size_t> frames;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      if (samples[i] != 0.0F) frames.push_back(i);
    }
    return frames;
  }
};

TEST_F(JackDelay, IsThatOfADirectConnectionForAnotherClient) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 2, 2);
  card.setSignal(&impulse);
  card.activate();
  route("card", std::vector<PatchConnection>{{0, 0, 1.0F, true}});
  JackTestClient ear = JackTestClient::ear("ear", 2);
  ear.activate();
  ear.listen(0, "Tolvane:out_1");
  ear.listen(1, "card:capture_1");
  settle(ear);
  ear.record(96000);
  ASSERT_TRUE(ear.awaitRecording());
  EXPECT_EQ(impulses(ear.recording(1)).size(), 96000 / kImpulseSpacing);
  EXPECT_EQ(impulses(ear.recording(0)), impulses(ear.recording(1)));  // no additional delay
}

TEST_F(JackDelay, IsThatOfADirectConnectionForTheCardsOwnLoop) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 2, 2);
  card.setSignal(&impulse);
  card.activate();
  route("card", std::vector<PatchConnection>{{0, 0, 1.0F, true}});
  card.connect("card:capture_1", "card:playback_2");  // the second output of ours is silent
  settle(card);
  card.record(96000);
  ASSERT_TRUE(card.awaitRecording());
  EXPECT_EQ(impulses(card.recording(1)).size(), 96000 / kImpulseSpacing);
  EXPECT_EQ(impulses(card.recording(0)), impulses(card.recording(1)));  // no additional delay
}

}  // namespace
}  // namespace tolvane::test
