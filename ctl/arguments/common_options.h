// Options that several commands have.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace tolvane::ctl {

/// `path` and `seconds` must outlive the parsing; `seconds` holds the default. [main-thread]
void declarePatch(CLI::App& command, std::string& path);
void declareWait(CLI::App& command, double& seconds);

}  // namespace tolvane::ctl
