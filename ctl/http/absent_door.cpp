// A build without the WebSocket library.
#include "ctl/http/door.h"

namespace tolvane::ctl::http {

bool isBuiltIn() noexcept {
  return false;
}

Result<OpenDoor, Failure> openDoor(control::Control& /*control*/, const DoorConfig& /*config*/) {
  return Failure{"this tolvanectl was built without HTTP"};
}

}  // namespace tolvane::ctl::http
