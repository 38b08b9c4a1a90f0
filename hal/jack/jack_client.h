#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "hal/jack/jack_library.h"
#include "hal/jack/jack_sockets.h"

namespace tolvane::hal {

/// Counts this process's clients that are about to close. libjack has one server's shared memory for the
/// whole process. If we opened a client on a new server while a client of a dead server still exists, the old
/// client would be left with dangling pointers. So no client opens until all leaving clients have closed.
class JackFarewells {
 public:
  /// [any-thread]
  static void begin() noexcept { leaving.fetch_add(1); }
  static void end() noexcept { leaving.fetch_sub(1); }
  /// Waits until no client is leaving. A hung server delays this. [not-io]
  static void await() noexcept {
    while (leaving.load() != 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

 private:
  static inline std::atomic<int> leaving{0};
};

struct JackClientCloser {
  void operator()(jack_client_t* client) const noexcept { JackLibrary::get()->clientClose(client); }
};

/// A connection to the server, closed on destruction. Closing talks to the server and must not happen inside
/// a libjack callback.
using JackClientPtr = std::unique_ptr<jack_client_t, JackClientCloser>;

/// Connects under this name, or under a similar one if it is taken. Never starts a server. Returns null if it
/// fails, as when no server is running; `status` holds the reason. Blocks while the server hangs.
///
/// Without a server it does not call libjack, which would first open a database that all clients of the user
/// share. A process that ends meanwhile leaves the database locked, and then no client of that user can open.
/// [not-io]
[[nodiscard]] inline JackClientPtr openJackClient(const JackLibrary& library, const char* name,
                                                  jack_status_t& status) noexcept {
  JackFarewells::await();
  status = JackServerFailed;
  if (!mayHaveJackServer(library)) return nullptr;
  status = jack_status_t{};
  return JackClientPtr(library.clientOpen(name, JackNoStartServer, &status));
}

}  // namespace tolvane::hal
