#pragma once

#include <vector>

#include "hal/driver/buffer_list.h"
#include "hal/jack/jack_library.h"

namespace tolvane::hal {

/// Our ports of one direction, and the buffer list with their buffers: one single-channel stream per port.
/// setPorts() allocates all memory, before the first cycle.
class PortBuffers {
 public:
  explicit PortBuffers(const JackLibrary& library) noexcept : library_(library) {}

  /// Sets the ports, in stream order. Must not be called while cycles run. [not-io]
  void setPorts(std::vector<jack_port_t*> ports);

  [[nodiscard]] const std::vector<jack_port_t*>& ports() const noexcept { return ports_; }

  /// The ports' buffers of the current cycle, which has `frames` frames. [io-thread]
  [[nodiscard]] AudioBufferList* gather(jack_nframes_t frames) noexcept;

  /// Zeroes the ports' buffers of the current cycle. [io-thread]
  void silence(jack_nframes_t frames) noexcept;

 private:
  const JackLibrary& library_;
  std::vector<jack_port_t*> ports_;
  BufferList buffers_{0};
};

}  // namespace tolvane::hal
