#include <algorithm>
#include <map>

#include "hal/jack/routing_fixture.h"

namespace tolvane::test {
namespace {

struct Size {
  std::size_t inputs;
  std::size_t outputs;
};

class JackRouting : public JackRoutingFixture, public ::testing::WithParamInterface<Size> {};

/// Routes one input to every output, never the input of the same number.
std::vector<PatchConnection> scatter(const Size& size) {
  std::vector<PatchConnection> routes;
  for (std::size_t out = 0; out < size.outputs; ++out) {
    const std::size_t in = (out * 5 + 3) % size.inputs;
    routes.push_back({static_cast<std::int64_t>(in), static_cast<std::int64_t>(out), 1.0F, true});
  }
  return routes;
}

TEST_P(JackRouting, PutsEverySampleOnItsOutputInItsCycle) {
  const Size size = GetParam();
  startServer(4096);  // long cycles: a busy machine has no time for so many ports in short ones
  JackTestClient card = JackTestClient::card("card", size.inputs, size.outputs);
  card.activate();
  const auto routes = scatter(size);
  route("card", routes);
  JackTestClient ear = JackTestClient::ear("ear", size.outputs + 1);
  ear.activate();
  listen(ear, size.outputs);
  ear.listen(size.outputs, "card:capture_1");
  settle(ear);

  ear.record(kLongWhile);
  ASSERT_TRUE(ear.awaitRecording());
  const auto& reference = ear.recording(size.outputs);
  expectUnbroken(reference);
  for (std::size_t out = 0; out < size.outputs; ++out) {
    const auto in = static_cast<std::size_t>(routes[out].inputChannel);
    expectSame(ear.recording(out), codedLike(reference, in), "output " + std::to_string(out));
  }
}

std::string sizeName(const ::testing::TestParamInfo<Size>& size) {
  return std::to_string(size.param.inputs) + "x" + std::to_string(size.param.outputs);
}

INSTANTIATE_TEST_SUITE_P(Sizes, JackRouting, ::testing::Values(Size{8, 8}, Size{18, 20}, Size{64, 64}),
                         sizeName);

class JackPatch : public JackRoutingFixture {
 protected:
  /// Routes a card with four inputs and four outputs. An ear hears all outputs and, last, the first input.
  void play(std::span<const PatchConnection> routes) {
    startServer();
    card_.emplace("card", 4, 4, JackPortIsPhysical | JackPortIsTerminal);
    card_->activate();
    route("card", routes);
    ear_.emplace("ear", 0, 5, 0);
    ear_->activate();
    listen(*ear_, 4);
    ear_->listen(4, "card:capture_1");
    settle(*ear_);
  }

  [[nodiscard]] const std::vector<float>& reference() const { return ear_->recording(4); }

  std::optional<JackTestClient> card_;
  std::optional<JackTestClient> ear_;
};

TEST_F(JackPatch, MultipliesAndMixesInRouteOrder) {
  play(std::vector<PatchConnection>{
      {0, 0, 0.3F, true}, {1, 0, -1.7F, true}, {2, 0, 1.0F, true}, {3, 1, 0.1F, true}, {0, 2, 1.0F, false}});
  ear_->record(kSecond);
  ASSERT_TRUE(ear_->awaitRecording());
  expectUnbroken(reference());
  std::vector<float> mixed;
  std::vector<float> scaled;
  for (const float sample : reference()) {
    const std::uint32_t frame = frameOf(sample);
    float sum = 0.0F;
    sum += codedSample(0, frame) * 0.3F;
    sum += codedSample(1, frame) * -1.7F;
    sum += codedSample(2, frame);
    mixed.push_back(sum);
    scaled.push_back(codedSample(3, frame) * 0.1F);
  }
  expectSame(ear_->recording(0), mixed, "the mix");
  expectSame(ear_->recording(1), scaled, "the scaled");
  expectSame(ear_->recording(2), std::vector<float>(kSecond, 0.0F), "the inactive");
  expectSame(ear_->recording(3), std::vector<float>(kSecond, 0.0F), "the unrouted");
}

TEST_F(JackPatch, ChangesBetweenTwoCyclesWithoutASilentOne) {
  const std::vector<PatchConnection> before{{1, 0, 1.0F, true}};
  const std::vector<PatchConnection> after{{2, 0, 1.0F, true}};
  play(before);
  for (int change = 0; change < 10; ++change) {
    publish(before);
    settle(*ear_);
    ear_->record(kLongestRecording);
    ASSERT_TRUE(eventually([&] { return ear_->recordedFrames() > 4096; }));
    const std::size_t framesBefore = ear_->recordedFrames();
    publish(after);
    const std::size_t framesAfter = ear_->recordedFrames();
    ASSERT_TRUE(eventually([&] { return ear_->recordedFrames() > framesAfter + 4096; }));
    ASSERT_TRUE(ear_->endRecording());

    expectUnbroken(reference());
    std::vector<float> wanted = codedLike(reference(), 1);
    const std::vector<float> newer = codedLike(reference(), 2);
    const auto& heard = ear_->recording(0);
    const auto changed = std::mismatch(heard.begin(), heard.end(), wanted.begin()).first - heard.begin();
    std::copy(newer.begin() + changed, newer.end(), wanted.begin() + changed);
    expectSame(heard, wanted,
               "the changed output");  // the old signal up to one frame, then the new
    const auto changedAt = static_cast<std::size_t>(changed);
    EXPECT_EQ(std::count(ear_->cycleStarts().begin(), ear_->cycleStarts().end(), changedAt), 1) << changedAt;
    // The cycle that ran during publish() may have had the old patch; the next one has the new.
    EXPECT_GE(changedAt, framesBefore);
    EXPECT_LE(changedAt, framesAfter + 256);
  }
}

TEST_F(JackPatch, PlaysOnThroughChangesOfTheServersBufferSize) {
  play(std::vector<PatchConnection>{{1, 0, 1.0F, true}, {3, 3, 1.0F, true}});
  ear_->record(kLongestRecording);
  for (const jack_nframes_t frames : {64U, 1024U, 256U, 64U, 256U, 1024U}) {
    card_->setBufferSize(frames);
    const std::size_t goal = ear_->recordedFrames() + 24000;
    ASSERT_TRUE(eventually([&] { return ear_->recordedFrames() > goal; }));
  }
  ASSERT_TRUE(ear_->endRecording());
  expectUnbroken(reference());
  expectSame(ear_->recording(0), codedLike(reference(), 1), "output 0");
  expectSame(ear_->recording(3), codedLike(reference(), 3), "output 3");
  std::map<std::size_t, int> lengths;
  const auto& starts = ear_->cycleStarts();
  for (std::size_t i = 1; i < starts.size(); ++i) ++lengths[starts[i] - starts[i - 1]];
  EXPECT_GT(lengths[64], 20);
  EXPECT_GT(lengths[256], 20);
  EXPECT_GT(lengths[1024], 20);
}

}  // namespace
}  // namespace tolvane::test
