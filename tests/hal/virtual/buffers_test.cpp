// The buffer lists that the callback gets, for every kind of layout.
#include <cstdint>
#include <numeric>
#include <optional>

#include <gtest/gtest.h>

#include "hal/virtual/virtual_device_run.h"

namespace tolvane::test {

namespace {

struct Seen {
  std::vector<AudioBuffer> input;
  std::vector<AudioBuffer> output;
};

std::vector<AudioBuffer> buffersOf(const AudioBufferList& list) {
  return {list.mBuffers, list.mBuffers + list.mNumberBuffers};
}

class VirtualBuffers : public VirtualDeviceTest {
 protected:
  /// The lists of one cycle.
  Seen seeCycle() {
    Seen seen;
    std::atomic<bool> done{false};
    run(
        [&](const AudioBufferList& input, AudioBufferList& output) {
          if (done.load()) return;
          seen = {buffersOf(input), buffersOf(output)};
          done = true;
        },
        [&] { return done.load(); });
    return seen;
  }

  static void expectLayout(const std::vector<AudioBuffer>& buffers, const std::vector<UInt32>& streams,
                           UInt32 frames) {
    ASSERT_EQ(buffers.size(), streams.size());
    for (std::size_t s = 0; s < streams.size(); ++s) {
      EXPECT_EQ(buffers[s].mNumberChannels, streams[s]);
      EXPECT_EQ(buffers[s].mDataByteSize, streams[s] * frames * 4U);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffers[s].mData) % 64, 0U);
      EXPECT_EQ(buffers[s].mData == nullptr, streams[s] == 0);
    }
  }
};

TEST_F(VirtualBuffers, haveEveryLayoutFrom1To1024Channels) {
  const std::vector<std::vector<UInt32>> layouts = {{},
                                                    {1},
                                                    {2},
                                                    {1, 1},
                                                    {3, 5, 7},
                                                    {64},
                                                    std::vector<UInt32>(64, 1),
                                                    {1024},
                                                    std::vector<UInt32>(1024, 1),
                                                    {0, 512, 0, 512}};
  for (const auto& inputs : layouts) {
    const auto& outputs = layouts[(layouts.size() - 1) - static_cast<std::size_t>(&inputs - layouts.data())];
    hal::VirtualDeviceConfig config;
    config.inputStreams = inputs;
    config.outputStreams = outputs;
    config.bufferFrames = 96;
    configure(config);
    const Seen seen = seeCycle();
    expectLayout(seen.input, inputs, 96);
    expectLayout(seen.output, outputs, 96);
  }
}

TEST_F(VirtualBuffers, ofStreamsWithoutDataKeepTheirChannels) {
  hal::VirtualDeviceConfig config;
  config.inputStreams = {2, 3, 4};
  config.inputStreamsWithoutData = {1};
  config.outputStreams = {1, 6};
  config.outputStreamsWithoutData = {0};
  configure(config);
  const Seen seen = seeCycle();
  ASSERT_EQ(seen.input.size(), 3U);
  EXPECT_NE(seen.input[0].mData, nullptr);
  EXPECT_EQ(seen.input[1].mData, nullptr);
  EXPECT_EQ(seen.input[1].mNumberChannels, 3U);
  EXPECT_EQ(seen.input[1].mDataByteSize, 512U * 3 * 4);
  EXPECT_NE(seen.input[2].mData, nullptr);
  ASSERT_EQ(seen.output.size(), 2U);
  EXPECT_EQ(seen.output[0].mData, nullptr);
  EXPECT_EQ(seen.output[0].mNumberChannels, 1U);
  EXPECT_NE(seen.output[1].mData, nullptr);
}

TEST_F(VirtualBuffers, doNotOverlap) {
  hal::VirtualDeviceConfig config;
  config.inputStreams = {1, 17, 2};
  config.outputStreams = {5, 1, 1};
  config.bufferFrames = 33;
  configure(config);
  const Seen seen = seeCycle();
  std::vector<std::pair<std::uintptr_t, std::uintptr_t>> spans;
  for (const auto* side : {&seen.input, &seen.output}) {
    for (const AudioBuffer& buffer : *side) {
      const auto begin = reinterpret_cast<std::uintptr_t>(buffer.mData);
      spans.emplace_back(begin, begin + buffer.mDataByteSize);
    }
  }
  std::sort(spans.begin(), spans.end());
  for (std::size_t i = 1; i < spans.size(); ++i) EXPECT_LE(spans[i - 1].second, spans[i].first);
}

// Each buffer begins on the first cache line after the previous one, even if cycles could be longer.
TEST_F(VirtualBuffers, lieCloseTogether) {
  hal::VirtualDeviceConfig config;
  config.inputStreams = {1, 17, 2, 1};
  config.inputStreamsWithoutData = {2};
  config.outputStreams = {5, 1, 1};
  config.bufferFrames = 33;
  configure(config);
  const Seen seen = seeCycle();
  const auto address = [](const AudioBuffer& buffer) {
    return reinterpret_cast<std::uintptr_t>(buffer.mData);
  };
  EXPECT_EQ(address(seen.input[1]) - address(seen.input[0]), 192U);  // 33 samples of 4 bytes
  EXPECT_EQ(address(seen.input[3]) - address(seen.input[1]), 2304U);
  EXPECT_EQ(address(seen.output[1]) - address(seen.output[0]), 704U);
  EXPECT_EQ(address(seen.output[2]) - address(seen.output[1]), 192U);
}

/// Keeps the first sample of the first output buffer of each cycle, and where the cycle began.
class FirstSamples final : public hal::VirtualTap {
 public:
  void observe(std::uint64_t firstFrame, std::uint32_t frames,
               const AudioBufferList& output) noexcept override {
    const std::size_t at = count.load();
    if (at >= samples.size()) return;
    samples[at] = *static_cast<const float*>(output.mBuffers[0].mData);
    firstFrames[at] = firstFrame;
    lengths[at] = frames;
    count.store(at + 1);
  }
  std::array<float, 8> samples{};
  std::array<std::uint64_t, 8> firstFrames{};
  std::array<std::uint32_t, 8> lengths{};
  std::atomic<std::size_t> count{0};
};

TEST_F(VirtualBuffers, outputsAreTheCallbacksToClearAndTheTapsToSee) {
  FirstSamples tap;
  hal::VirtualDeviceConfig config;
  config.bufferFrames = 128;
  config.outputTap = &tap;
  configure(config);
  int cycle = 0;
  std::optional<float> found;
  run(
      [&](auto&, AudioBufferList& output) {
        auto* const first = static_cast<float*>(output.mBuffers[0].mData);
        if (cycle == 1) found = *first;
        *first = static_cast<float>(++cycle);
      },
      [&] { return tap.count.load() == tap.samples.size(); });
  EXPECT_EQ(found, 1.0F);  // what the callback wrote in the cycle before
  for (std::size_t i = 0; i < tap.samples.size(); ++i) {
    EXPECT_EQ(tap.samples[i], static_cast<float>(i + 1));
    EXPECT_EQ(tap.firstFrames[i], i * 128);
    EXPECT_EQ(tap.lengths[i], 128U);
  }
}

/// Writes each frame's number in the run into every channel.
class FrameNumbers final : public hal::VirtualInput {
 public:
  void fill(std::uint64_t firstFrame, std::uint32_t frames, AudioBufferList& input) noexcept override {
    for (UInt32 b = 0; b < input.mNumberBuffers; ++b) {
      const AudioBuffer& buffer = input.mBuffers[b];
      if (buffer.mData == nullptr) continue;
      auto* const samples = static_cast<float*>(buffer.mData);
      for (UInt32 i = 0; i < frames * buffer.mNumberChannels; ++i) {
        samples[i] = static_cast<float>(firstFrame + i / buffer.mNumberChannels);
      }
    }
  }
};

TEST_F(VirtualBuffers, carryTheGivenInputSignal) {
  FrameNumbers numbers;
  hal::VirtualDeviceConfig config;
  config.inputStreams = {2, 1, 3};
  config.inputStreamsWithoutData = {1};
  config.bufferFrames = 64;
  config.inputSignal = &numbers;
  configure(config);
  std::vector<float> heard;
  std::atomic<bool> done{false};
  run(
      [&](const AudioBufferList& input, auto&) {
        if (done.load()) return;
        const auto* const samples = static_cast<const float*>(input.mBuffers[2].mData);
        for (std::size_t f = 0; f < 64; ++f) heard.push_back(samples[f * 3 + 2]);
        if (heard.size() >= 512) done = true;
      },
      [&] { return done.load(); });
  std::vector<float> wanted(512);
  std::iota(wanted.begin(), wanted.end(), 0.0F);
  EXPECT_EQ(heard, wanted);
}

}  // namespace

}  // namespace tolvane::test
