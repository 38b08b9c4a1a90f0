// Cycles of a PipeWire graph whose clock and buffers may be anything: buffers that are missing, too short,
// shifted or without memory, more than one for a cycle, any cycle length. The callback must see whole and
// readable buffers.
#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "bytes.h"
#include "hal/pipewire/cycle_runner.h"
#include "hal/pipewire/shared_buffer.h"
#include "require.h"

namespace tolvane::fuzz {
namespace {

using namespace hal::pipewire;

/// A buffer as the client library hands it out. Its memory has exactly the size that it says.
struct FakeBuffer {
  std::unique_ptr<float[]> memory;
  spa_chunk chunk{};
  spa_data data{};
  spa_buffer buffer{};
  pw_buffer taken{};
};

/// A port with the buffers that it will hand out.
struct FakePort : FilterPort {
  spa_io_buffers area{};
  std::deque<FakeBuffer> buffers;
  std::size_t next = 0;
};

FakePort* portOf(void* port) {
  return static_cast<FakePort*>(static_cast<FilterPort*>(port));
}

Library fakeLibrary() {
  Library library;
  library.pw_filter_dequeue_buffer = [](void* port) -> pw_buffer* {
    FakePort* const from = portOf(port);
    return from->next < from->buffers.size() ? &from->buffers[from->next++].taken : nullptr;
  };
  library.pw_filter_queue_buffer = [](void*, pw_buffer*) { return 0; };
  return library;
}

/// Reads every input and writes every output.
class Client final : public hal::SessionClient {
 public:
  void cycle(const hal::IoCycle& cycle) noexcept override {
    float sum = 0.0F;
    for (UInt32 b = 0; b < cycle.input->mNumberBuffers; ++b) {
      const AudioBuffer& buffer = cycle.input->mBuffers[b];
      const auto* const samples = static_cast<const float*>(buffer.mData);
      for (UInt32 i = 0; samples != nullptr && i < buffer.mDataByteSize / sizeof(float); ++i)
        sum += samples[i];
    }
    for (UInt32 b = 0; b < cycle.output->mNumberBuffers; ++b) {
      const AudioBuffer& buffer = cycle.output->mBuffers[b];
      auto* const samples = static_cast<float*>(buffer.mData);
      for (UInt32 i = 0; samples != nullptr && i < buffer.mDataByteSize / sizeof(float); ++i)
        samples[i] = sum;
    }
  }
  void overload() noexcept override {}
  void aliveChanged(bool /*alive*/) noexcept override {}
  void formatChanged(double /*sampleRateHz*/, std::uint32_t frames) noexcept override {
    require(frames <= kMaxCycleFrames);
  }
};

class Run {
 public:
  Run() : runner_(library(), client_, kInputs, kOutputs) {}

  /// Forgets earlier cycles. The runner stays, because it has a lot of memory.
  void run(Bytes bytes) {
    bytes_ = bytes;
    std::vector<FilterPort*> inputs;
    std::vector<FilterPort*> outputs;
    for (std::size_t i = 0; i < 4; ++i) inputs.push_back(&ports_[i]);
    for (std::size_t i = 4; i < 8; ++i) outputs.push_back(&ports_[i]);
    runner_.setPorts(inputs, outputs);
    for (int cycles = 0; cycles < 8 && !bytes_.isEmpty(); ++cycles) runCycle();
    for (FakePort& port : ports_) port.buffers.clear();
  }

 private:
  static const Library& library() {
    static const Library made = fakeLibrary();
    return made;
  }

  void runCycle() {
    spa_io_position position{};
    position.clock.id = bytes_.byte() & 1U;
    position.clock.rate.denom = bytes_.coin() ? 48000 : bytes_.number<std::uint32_t>();
    position.clock.duration = duration();
    position.clock.position = bytes_.number<std::uint64_t>();
    position.clock.nsec = bytes_.number<std::uint32_t>();
    for (FakePort& port : ports_) fill(port, static_cast<std::uint32_t>(position.clock.duration));
    runner_.setRunning(bytes_.below(8) != 7);
    runner_.process(bytes_.below(16) == 15 ? nullptr : &position);
  }

  /// Mostly short, because long cycles make the fuzzer slow.
  std::uint64_t duration() {
    const std::size_t kind = bytes_.below(64);
    if (kind == 0) return bytes_.number<std::uint64_t>();
    return kind == 1 ? bytes_.number<std::uint16_t>() : bytes_.byte();
  }

  /// The room of a buffer, in floats: as long as the cycle, or not.
  std::uint32_t room(std::uint32_t frames) {
    const std::size_t kind = bytes_.below(64);
    if (kind == 0) return bytes_.number<std::uint16_t>();
    return kind % 4 == 1 ? bytes_.byte() : frames % (kMaxCycleFrames + 1);
  }

  void fill(FakePort& port, std::uint32_t frames) {
    port.buffers.clear();
    port.next = 0;
    const std::size_t kind = bytes_.below(8);
    port.area.status = kind == 7 ? SPA_STATUS_HAVE_DATA : SPA_STATUS_NEED_DATA;
    port.io = kind == 6 ? nullptr : &port.area;
    const std::size_t count = bytes_.below(4);
    for (std::size_t i = 0; i < count; ++i) add(port, frames);
  }

  void add(FakePort& port, std::uint32_t frames) {
    FakeBuffer& made = port.buffers.emplace_back();
    const std::uint32_t floats = room(frames);
    if (bytes_.below(8) != 7) made.memory.reset(new float[floats]());
    made.data.data = made.memory.get();
    made.data.maxsize = floats * sizeof(float);
    made.chunk.offset = bytes_.coin() ? 0 : bytes_.number<std::uint32_t>();
    made.chunk.size = bytes_.coin() ? made.data.maxsize : bytes_.number<std::uint32_t>();
    made.data.chunk = &made.chunk;
    made.buffer.n_datas = 1;
    made.buffer.datas = &made.data;
    made.taken.buffer = &made.buffer;
    if (made.memory) hal::pipewire::setSampleBytes(made.taken, made.data.maxsize);
  }

  // A stream of one channel and one of several, in both directions.
  inline static const hal::StreamLayout kInputs = {1, 3};
  inline static const hal::StreamLayout kOutputs = {1, 3};

  Bytes bytes_{nullptr, 0};
  Client client_;
  std::array<FakePort, 8> ports_;
  CycleRunner runner_;
};

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static tolvane::fuzz::Run run;
  run.run({bytes, size});
  return 0;
}
