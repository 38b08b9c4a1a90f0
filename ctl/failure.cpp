#include "ctl/failure.h"

#include <system_error>

namespace tolvane::ctl {

Failure systemFailure(const std::string& what, int errorNumber) {
  return {what + ": " + std::generic_category().message(errorNumber)};
}

}  // namespace tolvane::ctl
