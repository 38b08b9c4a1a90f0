#pragma once

#include <memory>
#include <optional>

#include "base/result.h"
#include "ctl/doors/door.h"
#include "ctl/doors/listen_address.h"
#include "ctl/doors/token.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl::osc {

/// False if the program was built without OSC. [any-thread]
[[nodiscard]] bool isBuiltIn() noexcept;

/// An open door and where it listens, which has the port that the system chose for port 0.
struct OpenDoor {
  std::unique_ptr<Door> door;
  ListenAddress address;
};

/// Opens a UDP door for OSC. With a token, an address must say "/tolvane/hello TOKEN" before anything else is
/// taken from it. The model must outlive the door. Failure: the address cannot be listened at, no descriptor
/// is left, or the program was built without OSC. [main-thread]
[[nodiscard]] Result<OpenDoor, Failure> openDoor(control::Control& control, const ListenAddress& address,
                                                 std::optional<Token> token);

}  // namespace tolvane::ctl::osc
