#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

#include "choices.h"
#include "core/routing/routing_context.h"
#include "hal/core_audio.h"

namespace tolvane::test {

/// The most memory that a cycle may need, in floats.
inline constexpr std::size_t kMostFloats = 1U << 20U;

/// One buffer of a list. Its data lies in the cycle's memory.
struct RandomBuffer {
  UInt32 channels;
  UInt32 bytes;
  std::optional<std::size_t> place;  // in floats from the start of the memory; none: no data
};

/// The input of one IO cycle: whatever the callback must accept and a test can hold in memory. The buffers of
/// both lists lie anywhere in one block of memory, so they may overlap.
struct RandomCycle {
  std::vector<RandomBuffer> inputs;
  std::vector<RandomBuffer> outputs;
  IOProcContext context;
  bool hasInputList = true;  // false: the list itself is null
  bool hasOutputList = true;
};

/// Makes the cycle of some choices, which is the same on every machine.
class RandomCycleMaker {
 public:
  /// The cycle needs at most `mostFloats` of memory.
  explicit RandomCycleMaker(Choices choices, std::size_t mostFloats = kMostFloats)
      : choices_(choices), mostFloats_(mostFloats) {}

  RandomCycle make();

  /// Fills the memory of the cycle with samples of every kind.
  void fill(std::vector<float>& memory);

 private:
  std::size_t upTo(std::size_t most) { return choices_.upTo(most); }
  bool oneIn(std::size_t times) { return upTo(times - 1) == 0; }
  template <class T>
  T oneOf(std::initializer_list<T> choices) {
    return choices.begin()[upTo(choices.size() - 1)];
  }

  RandomCycle tryToMake(std::size_t mostFloats);
  std::size_t someFrames();
  UInt32 width();
  std::vector<RandomBuffer> list();
  void takeAway(std::vector<RandomBuffer>& list);
  void setBytes(RandomCycle& cycle);
  UInt32 firstOutputBytes(const RandomBuffer& buffer);
  UInt32 bytesOf(const RandomBuffer& buffer);
  UInt32 bytesOfNothing();
  void place(RandomCycle& cycle);
  std::size_t placeInOrder(const std::vector<RandomBuffer*>& buffers, std::size_t mostBetween);
  void moveSome(const std::vector<RandomBuffer*>& buffers);
  std::int32_t contextCount(const std::vector<RandomBuffer>& list);
  void makeRoutes(RandomCycle& cycle);
  std::int32_t channel(std::int32_t preferred, std::int32_t contextCount, std::int64_t listCount);
  float gain();
  float sample(std::size_t special);

  Choices choices_;
  std::size_t mostFloats_;
  std::size_t frames_ = 0;        // that most buffers hold
  std::size_t channelsLeft_ = 0;  // that the cycle's memory has room for
  bool ascending_ = false;        // every buffer holds exactly frames_
};

}  // namespace tolvane::test
