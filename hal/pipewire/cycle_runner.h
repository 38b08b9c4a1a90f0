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

/// A port of our node: the library keeps it, from the port's making to its end.
struct FilterPort {
  /// Where the library and the graph hand each other this port's buffers; null while they do not.
  std::atomic<spa_io_buffers*> handover = nullptr;
};

class CycleRunner {
 public:
  CycleRunner(const Library& library, SessionClient& client, const StreamLayout& inputs,
              const StreamLayout& outputs);

  /// The filter's ports, in channel order. While no filter runs. [not-io]
  void setPorts(std::vector<FilterPort*> inputs, std::vector<FilterPort*> outputs);

  /// Whether the client is called: not while nothing of the device is there. [any-thread]
  void setRunning(bool running) noexcept { running_.store(running, std::memory_order_release); }

  /// The client is called no more, from the moment this returns. [not-io]
  void shut() noexcept { gate_.shut(); }

  /// The graph's rate, as of the last cycle in which the client was called; 0 before the first. [any-thread]
  [[nodiscard]] std::uint32_t rateHz() const noexcept { return rateHz_.load(std::memory_order_relaxed); }

  /// One cycle of the server. Wait-free. [io-thread]
  void process(const spa_io_position* position) noexcept;

 private:
  /// The cycle as the server's clock has it.
  struct Moment {
    std::uint32_t clockId = 0;
    std::uint32_t rateHz = 0;
    std::uint64_t position = 0;
    std::uint32_t frames = 0;
    std::uint64_t nsec = 0;
    std::uint64_t xrunFrames = 0;  // of all the hardware's xruns so far
  };

  static Moment momentOf(const spa_io_clock& clock) noexcept;
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
  Moment last_;  // of the cycle before; without frames where there was none
  CallGate gate_;
  std::atomic<bool> running_ = false;
  std::atomic<std::uint32_t> rateHz_ = 0;
};

}  // namespace tolvane::hal::pipewire
