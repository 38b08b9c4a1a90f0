// A build without the WebSocket library.
#include "ctl/remote/link.h"

namespace tolvane::ctl::remote {

bool isBuiltIn() noexcept {
  return false;
}

Result<std::unique_ptr<Link>, Failure> openLink(const LinkConfig& /*config*/) {
  return Failure{"this tolvanectl was built without HTTP", ExitStatus::usage};
}

}  // namespace tolvane::ctl::remote
