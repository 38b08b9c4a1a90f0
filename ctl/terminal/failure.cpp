#include "ctl/terminal/failure.h"

#include <system_error>

#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

Failure systemFailure(const std::string& what, int errorNumber) {
  return {about(what, std::generic_category().message(errorNumber))};
}

}  // namespace tolvane::ctl
