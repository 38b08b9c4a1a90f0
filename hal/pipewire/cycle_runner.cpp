#include "hal/pipewire/cycle_runner.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "hal/driver/time_stamp.h"
#include "hal/pipewire/shared_buffer.h"

namespace tolvane::hal::pipewire {

namespace {

/// Reads the clock's last eight bytes. Only the headers of 1.0 and later name them; earlier servers leave
/// them zero.
std::uint64_t xrunFramesOf(const spa_io_clock& clock) noexcept {
  static_assert(sizeof(spa_io_clock) == 160, "shared with servers of all versions");
  std::uint64_t frames = 0;
  constexpr std::size_t kOffset = sizeof(spa_io_clock) - sizeof frames;
  std::memcpy(&frames, reinterpret_cast<const std::byte*>(&clock) + kOffset, sizeof frames);
  return frames;
}

}  // namespace

CycleRunner::CycleRunner(const Library& library, SessionClient& client, const StreamLayout& inputs,
                         const StreamLayout& outputs)
    : library_(library), client_(client), inputs_(inputs), outputs_(outputs) {
  gate_.open();
}

void CycleRunner::setPorts(std::vector<FilterPort*> inputs, std::vector<FilterPort*> outputs) {
  inputPorts_ = std::move(inputs);
  outputPorts_ = std::move(outputs);
  last_ = {};
}

void CycleRunner::process(const spa_io_position* position) noexcept {
  const Moment moment = position != nullptr ? momentOf(position->clock) : Moment{};
  // Take every port's buffer in every cycle, even if it is not used.
  fetchBuffers(moment.frames);
  const bool isWanted = moment.frames != 0 && running_.load(std::memory_order_acquire);
  const CallGate::Pass pass(gate_);
  if (!isWanted || !pass) {
    outputs_.silence();
    last_ = {};
    return;
  }
  noteClock(moment);
  callClient(moment);
}

CycleRunner::Moment CycleRunner::momentOf(const spa_io_clock& clock) noexcept {
  const auto frames = static_cast<std::uint32_t>(std::min<std::uint64_t>(clock.duration, kMaxCycleFrames));
  return {clock.id, clock.rate.denom, clock.position, frames, clock.nsec, xrunFramesOf(clock)};
}

/// The port's newest buffer; returns older ones to the graph. The library keeps one buffer of each cycle for
/// us, also of cycles in which the port was not among ours yet. Without the loop the port would stay late by
/// them.
pw_buffer* CycleRunner::newestOf(FilterPort& port) noexcept {
  pw_buffer* newest = nullptr;
  while (pw_buffer* const next = library_.pw_filter_dequeue_buffer(&port)) {
    if (newest != nullptr) library_.pw_filter_queue_buffer(&port, newest);
    newest = next;
  }
  return newest;
}

/// The samples of a whole cycle. A peer that has written less counts as having none.
void* CycleRunner::samplesIn(const pw_buffer& buffer, std::uint32_t frames) noexcept {
  const std::uint64_t there = sampleBytes(buffer);
  if (there == 0) return nullptr;
  const spa_data& block = buffer.buffer->datas[0];
  const std::uint64_t bytes = std::uint64_t{frames} * sizeof(float);
  const std::uint32_t offset = block.chunk->offset;
  const bool isWhole =
      bytes <= block.chunk->size && offset <= there && bytes <= there - offset && offset % sizeof(float) == 0;
  return isWhole ? static_cast<std::byte*>(block.data) + offset : nullptr;
}

void* CycleRunner::takeInput(FilterPort& port, std::uint32_t frames) noexcept {
  pw_buffer* const taken = newestOf(port);
  port.hasHadBuffer = port.hasHadBuffer || taken != nullptr;
  const std::uint32_t empty = port.emptyCycles.load(std::memory_order_relaxed);
  port.emptyCycles.store(taken == nullptr && port.hasHadBuffer ? empty + 1 : 0, std::memory_order_relaxed);
  if (taken == nullptr) return nullptr;
  void* const data = samplesIn(*taken, frames);
  library_.pw_filter_queue_buffer(&port, taken);
  return data;
}

void* CycleRunner::takeOutput(FilterPort& port, std::uint32_t frames) noexcept {
  // Skip the port while the graph has not taken its last buffer. The library would deliver that buffer in the
  // next cycle instead of the new one, and the port would stay one cycle late.
  const spa_io_buffers* const io = port.io.load(std::memory_order_acquire);
  if (io == nullptr || io->status == SPA_STATUS_HAVE_DATA) return nullptr;
  pw_buffer* const taken = library_.pw_filter_dequeue_buffer(&port);
  if (taken == nullptr) return nullptr;
  const auto bytes = static_cast<std::uint32_t>(frames * sizeof(float));
  const std::size_t there = sampleBytes(*taken);
  void* data = nullptr;
  if (there != 0 && bytes <= there) {
    const spa_data& block = taken->buffer->datas[0];
    *block.chunk = {0, bytes, sizeof(float), 0};
    data = block.data;
  }
  library_.pw_filter_queue_buffer(&port, taken);
  return data;
}

void CycleRunner::fetchBuffers(std::uint32_t frames) noexcept {
  for (std::size_t i = 0; i < inputPorts_.size(); ++i) inputs_.set(i, takeInput(*inputPorts_[i], frames));
  for (std::size_t i = 0; i < outputPorts_.size(); ++i) outputs_.set(i, takeOutput(*outputPorts_[i], frames));
  inputs_.begin(frames);
  outputs_.begin(frames);
}

void CycleRunner::noteClock(const Moment& moment) noexcept {
  const bool isSameClock = last_.clockId == moment.clockId && last_.rateHz == moment.rateHz;
  // A missed deadline shows only as a jump in the clock's position.
  const bool isLate = moment.position > last_.position + last_.frames;
  const bool isXrun = moment.xrunFrames > last_.xrunFrames;
  if (last_.frames != 0 && isSameClock && (isLate || isXrun)) client_.overload();
  if (last_.rateHz != moment.rateHz || last_.frames != moment.frames) {
    client_.formatChanged(moment.rateHz, moment.frames);
    rateHz_.store(moment.rateHz, std::memory_order_relaxed);
  }
  last_ = moment;
}

void CycleRunner::callClient(const Moment& moment) noexcept {
  const auto position = static_cast<double>(moment.position);
  const std::uint64_t cycleNs =
      moment.rateHz != 0 ? std::uint64_t{moment.frames} * 1'000'000'000U / moment.rateHz : 0;
  const AudioTimeStamp now = timeStamp(position, moment.nsec);
  const AudioTimeStamp input = timeStamp(position - moment.frames, moment.nsec - cycleNs);
  const AudioTimeStamp output = timeStamp(position + moment.frames, moment.nsec + cycleNs);
  inputs_.gather();
  client_.cycle({&now, &inputs_.list(), &input, &outputs_.list(), &output});
  outputs_.scatter();
}

}  // namespace tolvane::hal::pipewire
