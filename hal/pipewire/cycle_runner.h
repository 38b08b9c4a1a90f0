// The real-time side of a session: turns the server's cycles into the client's.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "hal/driver/call_gate.h"
#include "hal/driver/driver.h"
#include "hal/pipewire/library.h"
#include "hal/pipewire/stream_buffers.h"

namespace tolvane::hal::pipewire {

/// Our data of one port of our node. The library owns the memory for the port's lifetime.
struct FilterPort {
  /// The io area through which the library and the graph exchange this port's buffers; null while there is
  /// none.
  std::atomic<spa_io_buffers*> io = nullptr;
  bool isOutput = false;                       // set before there are buffers
  std::atomic<std::uint32_t> emptyCycles = 0;  // since the last buffer, of an input that has had one
  bool hasHadBuffer = false;                   // of the IO thread
};

class CycleRunner {
 public:
  CycleRunner(const Library& library, SessionClient& client, const StreamLayout& inputs,
              const StreamLayout& outputs);

  /// Sets the filter's ports, in channel order. Only while no filter runs. [not-io]
  void setPorts(std::vector<FilterPort*> inputs, std::vector<FilterPort*> outputs);

  /// Turns calls of the client on or off. They are off while no part of the device is present. [any-thread]
  void setRunning(bool running) noexcept { running_.store(running, std::memory_order_release); }

  /// After this returns, the client is not called again. [not-io]
  void shut() noexcept { gate_.shut(); }

  /// The graph's rate, as of the last cycle in which the client was called; 0 before the first. [any-thread]
  [[nodiscard]] std::uint32_t rateHz() const noexcept { return rateHz_.load(std::memory_order_relaxed); }

  /// The number of cycles since the input's port has had a buffer; 0 if it never had one. Use on the loop
  /// thread.
  [[nodiscard]] std::uint32_t emptyCycles(std::size_t input) const noexcept {
    return input < inputPorts_.size() ? inputPorts_[input]->emptyCycles.load(std::memory_order_relaxed) : 0;
  }

  /// One cycle of the server. Wait-free. [io-thread]
  void process(const spa_io_position* position) noexcept;

 private:
  /// One cycle as the server's clock describes it.
  struct Moment {
    std::uint32_t clockId = 0;
    std::uint32_t rateHz = 0;
    std::uint64_t position = 0;
    std::uint32_t frames = 0;
    std::uint64_t nsec = 0;
    std::uint64_t xrunFrames = 0;  // the total of all hardware xruns so far
  };

  static Moment momentOf(const spa_io_clock& clock) noexcept;
  pw_buffer* newestOf(FilterPort& port) noexcept;
  static void* samplesIn(const pw_buffer& buffer, std::uint32_t frames) noexcept;
  void* takeInput(FilterPort& port, std::uint32_t frames) noexcept;
  void* takeOutput(FilterPort& port, std::uint32_t frames) noexcept;
  void fetchBuffers(std::uint32_t frames) noexcept;
  void noteClock(const Moment& moment) noexcept;
  void callClient(const Moment& moment) noexcept;

  const Library& library_;
  SessionClient& client_;
  std::vector<FilterPort*> inputPorts_;
  std::vector<FilterPort*> outputPorts_;
  StreamBuffers inputs_;
  StreamBuffers outputs_;
  Moment last_;  // the previous cycle; 0 frames if there was none
  CallGate gate_;
  std::atomic<bool> running_ = false;
  std::atomic<std::uint32_t> rateHz_ = 0;
};

}  // namespace tolvane::hal::pipewire
