// Every variant of the mixing loops gives the bits of the reference order, whatever the buffers look like.
#include "kernel_variants.h"

#include <random>

namespace tolvane::test {
namespace {

INSTANTIATE_TEST_SUITE_P(All, KernelVariants, testing::ValuesIn(everyVariant()), variantName);

// Every width of interleaving up to two groups and a remainder, with frame counts around the block sizes.
TEST_P(KernelVariants, InterleavedBuffersOfEveryWidth) {
  for (std::uint32_t width = 1; width <= 40; ++width) {
    for (const std::int64_t frames : {1, 3, 4, 7, 8, 9, 15, 16, 17, 31, 32, 33, 48, 70}) {
      SCOPED_TRACE(testing::Message() << width << " channels, " << frames << " frames");
      RoutesInMemory cycle(frames, {width}, {width});
      for (std::int32_t c = 0; c < static_cast<std::int32_t>(width); ++c) {
        cycle.route((c * 7 + 3) % static_cast<std::int32_t>(width), c, 0.7F);
        if (c % 3 == 0) cycle.route(c, (c * 5) % static_cast<std::int32_t>(width), -1.3F);
      }
      expectReferenceBits(cycle);
    }
  }
}

TEST_P(KernelVariants, PlanarBuffersOfEveryLengthAroundTheVectors) {
  for (std::int64_t frames = 1; frames <= 140; ++frames) {
    SCOPED_TRACE(frames);
    RoutesInMemory cycle(frames, {1, 1, 1}, {1, 1});
    cycle.route(0, 1, 0.1F);
    cycle.route(1, 1, 1.0F);
    cycle.route(2, 1, -0.3F);
    expectReferenceBits(cycle);
  }
}

TEST_P(KernelVariants, PlanarToInterleavedAndBack) {
  RoutesInMemory cycle(100, {1, 18, 1}, {20, 1, 2, 1});
  for (std::int32_t i = 0; i < 60; ++i)
    cycle.route((i * 3) % 20, (i * 7) % 24, 0.05F * static_cast<float>(i - 30));
  expectReferenceBits(cycle);
}

// A few channels of a wide buffer are picked one by one; the rest of the output is cleared.
TEST_P(KernelVariants, FewRoutedChannelsOfWideBuffers) {
  RoutesInMemory cycle(64, {256}, {256});
  cycle.route(0, 255, 0.5F);
  cycle.route(100, 17, 0.25F);
  cycle.route(101, 17, 2.0F);
  expectReferenceBits(cycle);
}

// Zeros of both signs, denormals, infinities, and sums in which they cancel.
TEST_P(KernelVariants, ZerosDenormalsAndInfinities) {
  RoutesInMemory cycle(64, {4}, {4});
  const float values[] = {-0.0F, 0.0F, 1e-42F, -1e-42F, 3.4e38F, -3.4e38F, 1.0F, -1.0F};
  for (std::size_t i = 0; i < cycle.memory().size(); ++i) cycle.memory()[i] = values[i * 5 % 8];
  cycle.route(0, 0, 1.0F);
  cycle.route(1, 0, -1.0F);
  cycle.route(2, 1, -0.0F);
  cycle.route(3, 2, 1e30F);
  expectReferenceBits(cycle);
}

// An input that is the output, an input that starts inside one, two outputs that share frames: only the plain
// order defines the result.
TEST_P(KernelVariants, OverlappingBuffersKeepTheReferenceOrder) {
  for (std::ptrdiff_t shift = -70; shift <= 70; ++shift) {
    SCOPED_TRACE(shift);
    RoutesInMemory cycle(64, {1, 2}, {1, 2, 1});
    cycle.placeInput(0, cycle.outputPlace(0) + shift);
    cycle.placeOutput(2, cycle.outputPlace(1) + shift);
    cycle.route(0, 0, 0.5F);
    cycle.route(0, 3, 0.25F);
    cycle.route(1, 2, 2.0F);
    cycle.route(2, 0, -1.0F);
    expectReferenceBits(cycle);
  }
}

// Inputs are in order, and so are outputs, but the last input lies in the first output's memory. It must be
// read before that output is filled.
TEST_P(KernelVariants, TheLastInputOverTheFirstOutput) {
  for (const std::uint32_t width : {1U, 2U, 16U}) {
    for (std::ptrdiff_t shift = -64; shift <= 64; ++shift) {
      SCOPED_TRACE(testing::Message() << width << " channels, shift " << shift);
      RoutesInMemory cycle(64, {width, width}, {width, width});
      cycle.placeInput(1, cycle.outputPlace(0) + shift);
      const auto second = static_cast<std::int32_t>(width);
      cycle.route(second, second, 2.0F);
      cycle.route(0, 0, 0.5F);
      expectReferenceBits(cycle);
    }
  }
}

// Clearing an output that nothing is routed to silences an input that shares its memory.
TEST_P(KernelVariants, UnroutedOutputOverAnInputIsClearedFirst) {
  RoutesInMemory cycle(32, {1, 1}, {1, 1});
  cycle.placeInput(0, cycle.outputPlace(1));
  cycle.route(0, 0, 1.0F);
  expectReferenceBits(cycle);
}

// The routes write past the end of a later output that is shorter than the cycle, as in the reference order.
// They add to what lies there and do not overwrite it.
TEST_P(KernelVariants, AnOutputShorterThanTheCycle) {
  RoutesInMemory cycle(64, {1}, {1, 1});
  cycle.shortenOutput(1, 24);
  cycle.route(0, 1, 0.5F);
  expectReferenceBits(cycle);
}

TEST_P(KernelVariants, AnOutputLongerThanTheCycleIsClearedToItsEnd) {
  for (const std::uint32_t width : {1U, 2U, 8U, 18U}) {
    RoutesInMemory cycle(40, {width}, {1, width});
    cycle.lengthenOutput(1, 3);
    cycle.route(0, 1, 0.5F);
    expectReferenceBits(cycle);
  }
}

// Among many one-channel buffers, one at any place is wider, or shorter than the cycle.
TEST_P(KernelVariants, AWiderOrShorterBufferAmongPlanarOnes) {
  for (std::size_t place = 0; place < 12; ++place) {
    SCOPED_TRACE(place);
    std::vector<std::uint32_t> streams(12, 1);
    streams[place] = 2;
    RoutesInMemory wider(40, streams, streams);
    for (std::int32_t c = 0; c < 13; ++c) wider.route(12 - c, c, 0.3F);
    expectReferenceBits(wider);

    RoutesInMemory shorter(40, std::vector<std::uint32_t>(12, 1), std::vector<std::uint32_t>(12, 1));
    if (place > 0) shorter.shortenOutput(place, 10);
    for (std::int32_t c = 0; c < 12; ++c) shorter.route(c, c, 0.3F);
    expectReferenceBits(shorter);
  }
}

// Buffers from a driver that allocates all memory at once, with a gap or without. What lies between two
// routed outputs is cleared, up to the last byte and no further.
TEST_P(KernelVariants, PlanarBuffersOneBehindTheOther) {
  const std::vector<std::uint32_t> streams(12, 1);
  for (const std::int64_t frames : {1, 5, 16, 40, 64}) {
    for (unsigned routed = 0; routed < 4096; routed += 7) {
      SCOPED_TRACE(testing::Message() << frames << " frames, outputs " << routed);
      RoutesInMemory cycle(frames, streams, streams, 0);
      if (routed % 2 == 0) cycle.leaveGapBefore(routed / 2 % 12, 3);
      for (std::int32_t c = 0; c < 12; ++c) {
        if ((routed >> static_cast<unsigned>(c) & 1U) == 0) continue;
        cycle.route(11 - c, c, 0.3F);
        if (c % 3 == 0) cycle.route(c, c, -1.5F);
      }
      expectReferenceBits(cycle);
    }
  }
}

TEST_P(KernelVariants, InterleavedInputsIntoPlanarBuffersWithoutAGap) {
  RoutesInMemory cycle(50, {6}, {1, 1, 1, 1, 1}, 0);
  cycle.route(5, 1, 0.3F);
  cycle.route(0, 3, 0.6F);
  cycle.route(1, 3, 0.6F);
  expectReferenceBits(cycle);
}

// The size of an input does not limit how much is read. Here the cycle reads past the input, into an output.
TEST_P(KernelVariants, AnInputShorterThanTheCycleIsReadPastItsEnd) {
  RoutesInMemory cycle(64, {1}, {1, 1});
  cycle.placeInput(0, cycle.outputPlace(0) - 40);
  cycle.shortenInput(0, 24);
  cycle.route(0, 0, 0.5F);
  cycle.route(0, 1, 0.25F);
  expectReferenceBits(cycle);
}

// Devices may lay their buffers out as they like: backwards, or inputs among outputs.
TEST_P(KernelVariants, BuffersInAnyOrder) {
  std::mt19937 random(31);
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    RoutesInMemory cycle(40, {1, 1, 12, 1}, {1, 12, 1, 1});
    for (int swap = 0; swap < 4; ++swap) {
      const std::size_t planar[] = {0, 2, 3};
      const std::size_t output = planar[random() % 3];
      const std::size_t input = random() % 2;
      const std::ptrdiff_t place = cycle.inputPlace(input);
      cycle.placeInput(input, cycle.outputPlace(output));
      cycle.placeOutput(output, place);
    }
    for (int i = 0; i < 20; ++i)
      cycle.route(static_cast<std::int32_t>(random() % 15), static_cast<std::int32_t>(random() % 15), 0.7F);
    expectReferenceBits(cycle);
  }
}

TEST_P(KernelVariants, AtAnyAlignmentOfTheSamples) {
  for (std::ptrdiff_t shift = 1; shift < 16; ++shift) {
    RoutesInMemory cycle(50, {6, 1}, {5, 1});
    cycle.placeInput(0, cycle.inputPlace(0) + shift);
    cycle.placeOutput(0, cycle.outputPlace(0) - shift);
    for (std::int32_t i = 0; i < 12; ++i) cycle.route(i % 7, i % 6, 0.3F);
    expectReferenceBits(cycle);
  }
}

TEST_P(KernelVariants, RandomCycles) {
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    SCOPED_TRACE(round);
    expectReferenceBits(RoutesInMemory::random(random));
  }
}

}  // namespace
}  // namespace tolvane::test
