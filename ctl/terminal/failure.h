#pragma once

#include <string>

#include "ctl/terminal/exit_status.h"

namespace tolvane::ctl {

/// Why a command fails: a text for the user, without the program's name, and the exit status. Names in the
/// text have been through printable().
struct Failure {
  std::string text;
  ExitStatus status = ExitStatus::failed;
};

/// "WHAT: " and the system's text for `errorNumber`, an errno value. [not-io]
[[nodiscard]] Failure systemFailure(const std::string& what, int errorNumber);

}  // namespace tolvane::ctl
