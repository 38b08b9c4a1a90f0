// Mixing from interleaved inputs to interleaved outputs, a vector of channels at once. Whatever the pattern
// of the routes, the bits are those of the reference order, and nothing outside the buffers is read or
// written.
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "core/routing/mix/channel_table.h"
#include "core/routing/mix/cycle_mixer.h"
#include "kernel_variants.h"

namespace tolvane::test {
namespace {

class Lanes : public KernelVariants {};
INSTANTIATE_TEST_SUITE_P(All, Lanes, testing::ValuesIn(everyVariant()), variantName);

std::int32_t wrapped(std::int32_t channel, std::int32_t channels) {
  return (channel % channels + channels) % channels;
}

// Each output reads the input `shift` channels further on, wrapped around at the end.
TEST_P(Lanes, EveryShift) {
  for (const std::int32_t channels : {8, 16, 18, 20, 33}) {
    for (std::int32_t shift = 0; shift < channels; ++shift) {
      SCOPED_TRACE(testing::Message() << channels << " channels, shift " << shift);
      const auto width = static_cast<std::uint32_t>(channels);
      RoutesInMemory cycle(37, {width}, {width});
      for (std::int32_t c = 0; c < channels; ++c) cycle.route(wrapped(c + shift, channels), c, 0.7F);
      expectReferenceBits(cycle);
    }
  }
}

TEST_P(Lanes, InputsInReverseAndOneInputEverywhere) {
  for (const std::uint32_t width : {8U, 16U, 20U, 64U}) {
    const auto channels = static_cast<std::int32_t>(width);
    RoutesInMemory reversed(64, {width}, {width});
    RoutesInMemory one(64, {width}, {width});
    for (std::int32_t c = 0; c < channels; ++c) {
      reversed.route(channels - 1 - c, c, -0.3F);
      one.route(5, c, 1.0F);
    }
    expectReferenceBits(reversed);
    expectReferenceBits(one);
  }
}

// Several routes into each output, more into some, on an 18 x 20 device, with every frame count around the
// steps.
TEST_P(Lanes, SeveralRoutesIntoEachOutput) {
  for (std::int64_t frames = 1; frames <= 70; ++frames) {
    SCOPED_TRACE(frames);
    RoutesInMemory cycle(frames, {18}, {20});
    for (std::int32_t k = 0; k < kMaxPatchEntries; ++k)
      cycle.route(k % 18, k % 20, k % 5 == 0 ? 1.0F : 0.1F * static_cast<float>(k - 30));
    expectReferenceBits(cycle);
  }
}

TEST_P(Lanes, FromSeveralBuffersOfSeveralWidths) {
  for (const std::uint32_t second : {2U, 3U, 6U, 16U, 40U}) {
    SCOPED_TRACE(second);
    const auto inputs = static_cast<std::int32_t>(16 + second);
    RoutesInMemory cycle(50, {16, second}, {24, 2, 17});
    for (std::int32_t k = 0; k < kMaxPatchEntries; ++k) cycle.route((k + 7) % inputs, k % 43, 0.9F);
    expectReferenceBits(cycle);
  }
}

// Some groups of the output have no route at all, some a single one.
TEST_P(Lanes, OutputsThatNothingGoesTo) {
  for (std::int32_t count = 1; count < 24; ++count) {
    RoutesInMemory cycle(33, {32}, {64});
    for (std::int32_t k = 0; k < count; ++k) cycle.route(k, 20 + k, 0.4F);
    expectReferenceBits(cycle);
  }
}

// A lane without a route must ignore whatever lies in its place.
TEST_P(Lanes, NoNumbersAndInfinitiesStayInTheirLanes) {
  // The NaN that arithmetic makes on this processor: the sum of two such NaNs is the same one.
  volatile float infinite = INFINITY;
  const float noNumber = infinite - infinite;
  const float values[] = {-0.0F, 0.0F,  1e-42F,   -1e-42F,  3.4e38F,  -3.4e38F,
                          1.0F,  -1.0F, noNumber, INFINITY, -INFINITY};
  std::mt19937 random(11);
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    RoutesInMemory cycle(40, {20}, {24});
    for (float& sample : cycle.memory()) sample = values[random() % 11];
    const auto count = static_cast<std::int32_t>(random() % (kMaxPatchEntries + 1));
    for (std::int32_t k = 0; k < count; ++k) {
      const float gains[] = {1.0F, -0.0F, 0.0F, -1.0F, 1e30F, 1e-30F};
      cycle.route(static_cast<std::int32_t>((static_cast<unsigned>(k) + random() % 3) % 20), k % 24,
                  gains[random() % 6]);
    }
    expectReferenceBits(cycle);
  }
}

// Heap buffers of exactly the cycle's size, so that a memory checker sees every read beyond them.
TEST_P(Lanes, ReadNothingBeyondTheBuffers) {
  for (const std::int32_t channels : {8, 9, 16, 18, 31}) {
    for (const std::int32_t shift : {0, 1, 7}) {
      const auto size = static_cast<std::size_t>(channels) * 10;
      std::vector<float> input(size, 0.25F);
      std::vector<float> output(size, 9.0F);
      const auto width = static_cast<UInt32>(channels);
      const auto bytes = static_cast<UInt32>(size * sizeof(float));
      const AudioBufferList in{1, {{width, bytes, input.data()}}};
      AudioBufferList out{1, {{width, bytes, output.data()}}};
      ChannelTable inputs(channels);
      ChannelTable outputs(channels);
      inputs.addChannelsOf(in);
      outputs.addChannelsOf(out);
      CycleRoutes routes(channels);
      for (std::int32_t c = channels - 1; c >= 0; --c) {
        const std::int32_t source = (c + shift) % channels;
        routes.put(c, {source, c, 2.0F}, inputs[source], outputs[c]);
      }
      CycleMixer(routes, inputs, outputs, 10, *GetParam()).mix(in, out);
      EXPECT_EQ(output, std::vector<float>(size, 0.5F)) << channels << " channels, shift " << shift;
    }
  }
}

TEST_P(Lanes, RandomNeighbourhoods) {
  std::mt19937 random(23);
  for (int round = 0; round < 400; ++round) {
    SCOPED_TRACE(round);
    const auto width = 4 + static_cast<std::uint32_t>(random() % 70);
    const auto channels = static_cast<std::int32_t>(width);
    RoutesInMemory cycle(1 + static_cast<std::int64_t>(random() % 80), {width}, {width});
    const auto count = static_cast<std::int32_t>(random() % (kMaxPatchEntries + 1));
    for (std::int32_t k = 0; k < count; ++k) {
      const auto near = static_cast<std::int32_t>(random() % 9) - 4;
      cycle.route(wrapped(k + near, channels), k % channels,
                  static_cast<float>(random() % 100) / 50.0F - 1.0F);
    }
    expectReferenceBits(cycle);
  }
}

}  // namespace
}  // namespace tolvane::test
