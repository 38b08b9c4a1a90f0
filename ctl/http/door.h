#pragma once

#include <memory>
#include <optional>
#include <string>

#include "base/result.h"
#include "ctl/doors/door.h"
#include "ctl/doors/listen_address.h"
#include "ctl/doors/token.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl::http {

/// False if the program was built without HTTP. [any-thread]
[[nodiscard]] bool isBuiltIn() noexcept;

/// PEM files.
struct TlsFiles {
  std::string certificate;  // with the chain, if there is one
  std::string key;          // without a passphrase
};

struct DoorConfig {
  ListenAddress address;
  std::optional<Token> token;   // clients must say it first
  std::optional<TlsFiles> tls;  // none: not encrypted
};

/// An open door and where it listens, which has the port that the system chose for port 0.
struct OpenDoor {
  std::unique_ptr<Door> door;
  ListenAddress address;
};

/// Opens a door for browsers: the page at "/", and at "/ws" a WebSocket with the messages of
/// ctl/control/json.h. The network is served by a thread of the door's own. The model must outlive the door.
/// Failure: the address cannot be listened at, the certificate or the key cannot be used, no descriptor is
/// left, or the program was built without HTTP. [main-thread]
[[nodiscard]] Result<OpenDoor, Failure> openDoor(control::Control& control, const DoorConfig& config);

}  // namespace tolvane::ctl::http
