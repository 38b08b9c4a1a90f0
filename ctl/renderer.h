#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "ctl/hand_over.h"
#include "ctl/offline_router.h"
#include "ctl/patch_source.h"
#include "ctl/sound_file.h"

namespace tolvane::ctl {

/// Sends a sound file through the routing, block by block: while one block is written, the next ones are
/// routed and read by two threads of its own. [main-thread]
class Renderer {
 public:
  /// `cycleFrames` are routed at a time; the result does not depend on it.
  Renderer(SoundReader& reader, SoundWriter& writer, const Routes& routes, std::int32_t outputs,
           std::int32_t cycleFrames);

  /// Everything from the reader into the writer. Failure: one of theirs, or no thread to be had. To be
  /// called once.
  [[nodiscard]] std::optional<Failure> run();

 private:
  struct Block {
    std::unique_ptr<float[]> input;
    std::unique_ptr<float[]> output;
    std::size_t frames = 0;
  };
  class Threads;

  void readBlocks();
  void routeBlocks();
  [[nodiscard]] std::optional<Failure> writeBlocks();
  void routeBlock(const Block& block) noexcept;

  SoundReader& reader_;
  SoundWriter& writer_;
  OfflineRouter router_;
  std::size_t inputs_;
  std::size_t outputs_;
  std::size_t cycleFrames_;
  std::size_t blockFrames_;
  std::array<Block, 6> blocks_;  // one in each hand, and one waiting at each
  HandOver<Block> empty_;
  HandOver<Block> read_;
  HandOver<Block> routed_;
  std::optional<Failure> readFailure_;  // the reading thread's, until it has ended
};

}  // namespace tolvane::ctl
