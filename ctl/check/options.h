#pragma once

#include <string>
#include <vector>

#include "ctl/terminal/exit_status.h"

namespace CLI {
class App;
}

namespace tolvane::ctl {

/// Declares the command `check`. Parsing fills `paths`, then runs the command and sets `status`. Both must
/// outlive the parsing. [main-thread]
void declareCheck(CLI::App& program, std::vector<std::string>& paths, ExitStatus& status);

}  // namespace tolvane::ctl
