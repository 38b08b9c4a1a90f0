// Random patches over random devices: the routing agrees with the plain loop to the bit.
#include <cstring>
#include <numeric>
#include <random>

#include "routing_fixture.h"
#include "support/reference_mixer.h"

namespace tolvane::test {
namespace {

/// A device's streams: how many channels each has, and which of them deliver no data.
struct Layout {
  std::vector<UInt32> widths;
  std::vector<bool> hasData;

  [[nodiscard]] std::size_t channels() const { return std::accumulate(widths.begin(), widths.end(), 0UL); }
};

class RandomPatch {
 public:
  explicit RandomPatch(unsigned seed) : random_(seed) {
    inputs_ = layout();
    outputs_ = layout();
    outputs_.hasData[0] = true;
    frames_ = oneOf({1, 2, 7, 16, 31, 32, 33, 64, 100, 128, 255, 512, 513});
    makeInputSamples();
    makeRoutes();
  }

  void expectBitExact() {
    BufferList input = buffers(inputs_, 0.0F);
    BufferList output = buffers(outputs_, 77.0F);
    interleave(input);
    IOProcContext context = initialContext(nIn(), nOut());
    writeConnections(&context, routes_);
    routeCycle(input.get(), output.get(), &context);
    EXPECT_TRUE(output.guardsIntact());
    compare(output);
  }

 private:
  std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(random_); }
  std::size_t oneOf(const std::vector<std::size_t>& choices) { return choices[upTo(choices.size() - 1)]; }

  Layout layout() {
    Layout result;
    std::size_t left = oneOf({1, 2, 3, 8, 18, 20, 32, 64});
    const bool planar = upTo(2) == 0;
    while (left > 0) {
      const std::size_t width = planar ? 1 : std::min(left, 1 + upTo(left - 1));
      result.widths.push_back(static_cast<UInt32>(width));
      result.hasData.push_back(upTo(9) != 0);
      left -= width;
    }
    return result;
  }

  // Mostly audio, with zeros of both signs and very large and very small values in between.
  float sample() {
    switch (upTo(40)) {
      case 0:
        return -0.0F;
      case 1:
        return 1e-42F;
      case 2:
        return 1e20F;
      default:
        return std::uniform_real_distribution<float>(-1.0F, 1.0F)(random_);
    }
  }
  float gain() {
    switch (upTo(9)) {
      case 0:
      case 1:
      case 2:
        return 1.0F;
      case 3:
        return 0.0F;
      case 4:
        return -1.0F;
      default:
        return std::uniform_real_distribution<float>(-4.0F, 4.0F)(random_);
    }
  }

  void makeInputSamples() {
    samples_.assign(inputs_.channels(), std::vector<float>(frames_));
    for (auto& channel : samples_) std::generate(channel.begin(), channel.end(), [this] { return sample(); });
  }

  // Every seventh or so names a channel that is not there.
  std::int64_t channelOf(std::size_t count) {
    const auto inRange = static_cast<std::int64_t>(upTo(count - 1));
    switch (upTo(20)) {
      case 0:
        return -1 - inRange;
      case 1:
        return inRange + static_cast<std::int64_t>(count);
      case 2:
        return 2147483647;
      default:
        return inRange;
    }
  }
  void makeRoutes() {
    const std::size_t count = oneOf({0, 1, 2, 8, 40, 64, 70});
    for (std::size_t i = 0; i < count; ++i) {
      routes_.push_back(
          {channelOf(inputs_.channels()), channelOf(outputs_.channels()), gain(), upTo(7) != 0});
    }
  }

  // The context's counts are the device's, or now and then one channel fewer.
  [[nodiscard]] std::int64_t nIn() const {
    return std::max<std::int64_t>(1, static_cast<std::int64_t>(inputs_.channels()) - (frames_ == 7 ? 1 : 0));
  }
  [[nodiscard]] std::int64_t nOut() const {
    return std::max<std::int64_t>(1,
                                  static_cast<std::int64_t>(outputs_.channels()) - (frames_ == 33 ? 1 : 0));
  }

  BufferList buffers(const Layout& layout, float fill) const {
    BufferList list;
    for (std::size_t i = 0; i < layout.widths.size(); ++i) {
      if (layout.hasData[i])
        list.add(layout.widths[i], frames_, fill);
      else
        list.addWithoutData(layout.widths[i]);
    }
    return list;
  }

  void interleave(BufferList& list) const {
    std::size_t channel = 0;
    for (std::size_t i = 0; i < inputs_.widths.size(); ++i) {
      const std::size_t width = inputs_.widths[i];
      for (std::size_t c = 0; c < width && inputs_.hasData[i]; ++c) {
        for (std::size_t f = 0; f < frames_; ++f) list.samples(i)[f * width + c] = samples_[channel + c][f];
      }
      channel += width;
    }
  }

  static std::vector<bool> channelsWithData(const Layout& layout) {
    std::vector<bool> result;
    for (std::size_t i = 0; i < layout.widths.size(); ++i)
      result.insert(result.end(), layout.widths[i], layout.hasData[i]);
    return result;
  }

  [[nodiscard]] std::vector<ReferenceRoute> routesThatSound() const {
    const std::vector<bool> in = channelsWithData(inputs_);
    const std::vector<bool> out = channelsWithData(outputs_);
    std::vector<ReferenceRoute> result;
    int published = 0;
    for (const PatchConnection& route : routes_) {
      if (!route.active || published++ >= 64) continue;
      if (route.inputChannel < 0 || route.inputChannel >= nIn()) continue;
      if (route.outputChannel < 0 || route.outputChannel >= nOut()) continue;
      const auto input = static_cast<std::size_t>(route.inputChannel);
      const auto output = static_cast<std::size_t>(route.outputChannel);
      if (in[input] && out[output]) result.push_back({input, output, route.gain});
    }
    return result;
  }

  void compare(BufferList& output) const {
    const Channels expected = mixPlainly(samples_, outputs_.channels(), frames_, routesThatSound());
    std::size_t channel = 0;
    for (std::size_t i = 0; i < outputs_.widths.size(); ++i) {
      for (std::size_t c = 0; c < outputs_.widths[i] && outputs_.hasData[i]; ++c) {
        const std::vector<float> got = output.channel(i, c);
        ASSERT_EQ(got.size(), frames_);
        EXPECT_EQ(std::memcmp(got.data(), expected[channel + c].data(), frames_ * sizeof(float)), 0)
            << "output channel " << channel + c;
      }
      channel += outputs_.widths[i];
    }
  }

  std::mt19937 random_;
  Layout inputs_;
  Layout outputs_;
  std::size_t frames_;
  Channels samples_;
  std::vector<PatchConnection> routes_;
};

TEST(RandomPatches, AgreeWithThePlainLoopToTheBit) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomPatch(seed).expectBitExact();
    if (testing::Test::HasFailure()) break;
  }
}

}  // namespace
}  // namespace tolvane::test
