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

/// The option --device, whose value is as for chooseDevice(). `purpose` says in the help what it is for.
/// [main-thread]
void declareDevice(CLI::App& command, std::string& device, const std::string& purpose);

}  // namespace tolvane::ctl
