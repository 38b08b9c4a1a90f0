#pragma once

#include "base/result.h"
#include "ctl/doors/listen_address.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl::http {

/// A socket that listens, and does not block. Its owner closes it.
struct Listener {
  int socket = -1;
  ListenAddress address;  // with the port that the system chose for port 0
};

/// Failure: the address cannot be listened at, or no descriptor is left. [not-io]
[[nodiscard]] Result<Listener, Failure> listenAt(const ListenAddress& address);

/// The next connection that waits, as a socket that does not block; -1: none. Waits a moment if no descriptor
/// is left, so that a caller who polls does not spin. [not-io]
[[nodiscard]] int acceptNext(int listening);

}  // namespace tolvane::ctl::http
