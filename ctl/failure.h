#pragma once

#include <string>

#include "ctl/exit_status.h"

namespace tolvane::ctl {

/// Why a command cannot go on: a text for the user, without the program's name, and the status to leave with.
/// Names in the text are printable().
struct Failure {
  std::string text;
  ExitStatus status = ExitStatus::failed;
};

/// "WHAT: the system's words for `errorNumber`". [not-io]
[[nodiscard]] Failure systemFailure(const std::string& what, int errorNumber);

}  // namespace tolvane::ctl
