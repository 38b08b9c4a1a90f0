#include "hal/registry/buffer_view.h"

#include <utility>

namespace tolvane::hal {

namespace {

/// The frame count of a cycle, from the first buffer that is not empty; 0 if all are.
UInt32 framesOf(const AudioBufferList& list) noexcept {
  for (UInt32 b = 0; b < list.mNumberBuffers; ++b) {
    const AudioBuffer& buffer = list.mBuffers[b];
    if (buffer.mNumberChannels == 0 || buffer.mDataByteSize == 0) continue;
    return static_cast<UInt32>(buffer.mDataByteSize / (buffer.mNumberChannels * sizeof(Float32)));
  }
  return 0;
}

}  // namespace

BufferView::Direction::Direction(StreamLayout streams)
    : promised(std::move(streams)), buffers(promised.size()) {}

void BufferView::Direction::show(const AudioBufferList& from, UInt32 frames) noexcept {
  for (std::size_t b = 0; b < promised.size(); ++b) {
    const bool there = b < from.mNumberBuffers && from.mBuffers[b].mNumberChannels == promised[b];
    if (there) {
      buffers.list().mBuffers[b] = from.mBuffers[b];
    } else {
      buffers.set(b, promised[b], frames, nullptr);
    }
  }
}

BufferView::BufferView(const DeviceInfo& promised, const DeviceInfo& actual)
    : same_(promised.inputStreams == actual.inputStreams && promised.outputStreams == actual.outputStreams),
      input_(promised.inputStreams),
      output_(promised.outputStreams) {}

const IoCycle& BufferView::show(const IoCycle& cycle) noexcept {
  if (same_) return cycle;
  const UInt32 outputFrames = framesOf(*cycle.output);
  const UInt32 frames = outputFrames != 0 ? outputFrames : framesOf(*cycle.input);
  input_.show(*cycle.input, frames);
  output_.show(*cycle.output, frames);
  shown_ = cycle;
  shown_.input = &input_.buffers.list();
  shown_.output = &output_.buffers.list();
  return shown_;
}

}  // namespace tolvane::hal
