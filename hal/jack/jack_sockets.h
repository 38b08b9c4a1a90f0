#pragma once

#include "hal/jack/jack_library.h"

namespace tolvane::hal {

/// False if no JACK server can be running: jackd 2 keeps the sockets of all servers in /dev/shm, and none is
/// there. True for other libraries, whose sockets we do not know. [not-io]
[[nodiscard]] bool mayHaveJackServer(const JackLibrary& library) noexcept;

}  // namespace tolvane::hal
