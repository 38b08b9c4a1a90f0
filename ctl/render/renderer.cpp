#include "ctl/render/renderer.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <thread>

#include "ctl/terminal/progress_bar.h"

namespace tolvane::ctl {

namespace {

/// Frames per block: whole cycles, about half a megabyte for the wider side, so that all blocks stay in the
/// cache that the threads share.
std::size_t framesAtOnce(std::size_t cycleFrames, std::int32_t channels) {
  constexpr std::size_t kSamplesAtOnce = 131072;
  const std::size_t samplesACycle = cycleFrames * static_cast<std::size_t>(channels);
  return cycleFrames * std::max<std::size_t>(1, kSamplesAtOnce / samplesACycle);
}

/// True if the file is long enough for a progress bar: a minute of sound.
bool isLong(const SoundReader& reader) {
  return reader.frames().value_or(0) >= std::int64_t{60} * reader.sampleRateHz();
}

}  // namespace

/// The reading and the routing thread. The destructor waits until both have finished their current blocks and
/// ended.
class Renderer::Threads {
 public:
  /// Throws std::system_error if a thread cannot be started.
  explicit Threads(Renderer& renderer) : renderer_(renderer) {
    try {
      reading_ = std::thread([&renderer] { renderer.readBlocks(); });
      routing_ = std::thread([&renderer] { renderer.routeBlocks(); });
    } catch (const std::system_error&) {
      end();
      throw;
    }
  }
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;
  ~Threads() { end(); }

 private:
  void end() {
    renderer_.empty_.abandon();
    for (std::thread* const thread : {&reading_, &routing_}) {
      if (thread->joinable()) thread->join();
    }
  }

  Renderer& renderer_;
  std::thread reading_;
  std::thread routing_;
};

Renderer::Renderer(SoundReader& reader, SoundWriter& writer, const Routes& routes, std::int32_t outputs,
                   std::int32_t cycleFrames)
    : reader_(reader),
      writer_(writer),
      router_(routes, reader.channels(), outputs),
      inputs_(static_cast<std::size_t>(reader.channels())),
      outputs_(static_cast<std::size_t>(outputs)),
      cycleFrames_(static_cast<std::size_t>(cycleFrames)),
      blockFrames_(framesAtOnce(cycleFrames_, std::max(reader.channels(), outputs))) {
  for (Block& block : blocks_) {
    block.input.reset(new float[blockFrames_ * inputs_]);
    block.output.reset(new float[blockFrames_ * outputs_]);
    empty_.put(&block);
  }
}

std::optional<Failure> Renderer::run() {
  std::optional<Failure> failure;
  try {
    const Threads threads(*this);
    failure = writeBlocks();
  } catch (const std::system_error& error) {
    return Failure{std::string("no thread to render with: ") + error.what()};
  }
  return failure ? failure : readFailure_;
}

void Renderer::readBlocks() {
  while (Block* const block = empty_.take()) {
    auto frames = reader_.read(block->input.get(), blockFrames_);
    if (!frames) readFailure_ = frames.error();
    if (!frames || frames.value() == 0) break;
    block->frames = frames.value();
    read_.put(block);
  }
  read_.close();
}

void Renderer::routeBlocks() {
  while (Block* const block = read_.take()) {
    routeBlock(*block);
    routed_.put(block);
  }
  routed_.close();
}

std::optional<Failure> Renderer::writeBlocks() {
  ProgressBar bar(reader_.frames(), isLong(reader_));
  std::int64_t done = 0;
  while (Block* const block = routed_.take()) {
    if (auto failure = writer_.write(block->output.get(), block->frames)) return failure;
    done += static_cast<std::int64_t>(block->frames);
    bar.show(done);
    empty_.put(block);
  }
  return std::nullopt;
}

void Renderer::routeBlock(const Block& block) noexcept {
  for (std::size_t first = 0; first < block.frames; first += cycleFrames_) {
    router_.route(&block.input[first * inputs_], &block.output[first * outputs_],
                  std::min(cycleFrames_, block.frames - first));
  }
}

}  // namespace tolvane::ctl
