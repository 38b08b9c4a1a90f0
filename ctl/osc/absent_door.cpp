// A build without the OSC library.
#include "ctl/osc/door.h"

namespace tolvane::ctl::osc {

bool isBuiltIn() noexcept {
  return false;
}

Result<OpenDoor, Failure> openDoor(control::Control& /*control*/, const ListenAddress& /*address*/,
                                   std::optional<Token> /*token*/) {
  return Failure{"this program was built without OSC"};
}

}  // namespace tolvane::ctl::osc
