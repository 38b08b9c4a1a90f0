#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "ctl/patch/source.h"
#include "ctl/render/block_queue.h"
#include "ctl/render/offline_router.h"
#include "ctl/render/sound_file.h"

namespace tolvane::ctl {

/// Renders a sound file block by block. Two threads of its own read and route the next blocks while the
/// calling thread writes one. [main-thread]
class Renderer {
 public:
  /// `cycleFrames`: frames per cycle of the routing routine. The result does not depend on it.
  Renderer(SoundReader& reader, SoundWriter& writer, const Routes& routes, std::int32_t outputs,
           std::int32_t cycleFrames);

  /// Renders everything from the reader into the writer. Failure: the reader or the writer fails, or no
  /// thread can be started. Call once.
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
  std::array<Block, 6> blocks_;  // one in use by each of the three threads, and one in each queue
  BlockQueue<Block> empty_;
  BlockQueue<Block> read_;
  BlockQueue<Block> routed_;
  std::optional<Failure> readFailure_;  // belongs to the reading thread until that has ended
};

}  // namespace tolvane::ctl
