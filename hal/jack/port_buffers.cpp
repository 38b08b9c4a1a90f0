#include "hal/jack/port_buffers.h"

#include <cstring>
#include <utility>

namespace tolvane::hal {

void PortBuffers::setPorts(std::vector<jack_port_t*> ports) {
  ports_ = std::move(ports);
  buffers_ = BufferList(ports_.size());
}

AudioBufferList* PortBuffers::gather(jack_nframes_t frames) noexcept {
  for (std::size_t p = 0; p < ports_.size(); ++p) {
    buffers_.set(p, 1, frames, library_.portGetBuffer(ports_[p], frames));
  }
  return &buffers_.list();
}

void PortBuffers::silence(jack_nframes_t frames) noexcept {
  for (jack_port_t* port : ports_) {
    void* samples = library_.portGetBuffer(port, frames);
    if (samples != nullptr) std::memset(samples, 0, frames * sizeof(float));
  }
}

}  // namespace tolvane::hal
