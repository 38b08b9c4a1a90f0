#include "hal/jack/port_buffers.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace tolvane::hal {
namespace {

std::size_t listWords(std::size_t buffers) noexcept {
  const std::size_t bytes = offsetof(AudioBufferList, mBuffers) + buffers * sizeof(AudioBuffer);
  return std::max(bytes, sizeof(AudioBufferList)) / sizeof(std::uint64_t);
}

}  // namespace

void PortBuffers::setPorts(std::vector<jack_port_t*> ports) {
  ports_ = std::move(ports);
  storage_.assign(listWords(ports_.size()), 0);
  list_ = new (storage_.data()) AudioBufferList{};
  list_->mNumberBuffers = static_cast<UInt32>(ports_.size());
}

AudioBufferList* PortBuffers::gather(jack_nframes_t frames) noexcept {
  AudioBuffer* buffer = list_->mBuffers;
  for (jack_port_t* port : ports_) {
    *buffer++ = {1, frames * static_cast<UInt32>(sizeof(float)), library_.portGetBuffer(port, frames)};
  }
  return list_;
}

void PortBuffers::silence(jack_nframes_t frames) noexcept {
  for (jack_port_t* port : ports_) {
    void* samples = library_.portGetBuffer(port, frames);
    if (samples != nullptr) std::memset(samples, 0, frames * sizeof(float));
  }
}

}  // namespace tolvane::hal
