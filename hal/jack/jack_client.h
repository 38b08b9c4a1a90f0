#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "hal/jack/jack_library.h"

namespace tolvane::hal {

/// Clients of this process that are about to be closed. libjack has one server's shared memory for the whole
/// process: while a client of a dead server is still there, opening one on the next server leaves the old one
/// with dangling pointers. So nothing is opened until all that are leaving have left.
class JackFarewells {
 public:
  /// [any-thread]
  static void begin() noexcept { leaving.fetch_add(1); }
  static void end() noexcept { leaving.fetch_sub(1); }
  /// Returns once nobody is leaving, which a hung server puts off. [not-io]
  static void await() noexcept {
    while (leaving.load() != 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

 private:
  static inline std::atomic<int> leaving{0};
};

struct JackClientCloser {
  void operator()(jack_client_t* client) const noexcept { JackLibrary::get()->clientClose(client); }
};

/// A connection to the server, closed with its owner. Closing talks to the server, and must not happen inside
/// a callback of libjack.
using JackClientPtr = std::unique_ptr<jack_client_t, JackClientCloser>;

/// Connects under this name, or one like it when it is taken; null when no server is running: none is ever
/// started. `status` says why. Blocks while the server hangs. [not-io]
[[nodiscard]] inline JackClientPtr openJackClient(const JackLibrary& library, const char* name,
                                                  jack_status_t& status) noexcept {
  JackFarewells::await();
  status = jack_status_t{};
  return JackClientPtr(library.clientOpen(name, JackNoStartServer, &status));
}

}  // namespace tolvane::hal
