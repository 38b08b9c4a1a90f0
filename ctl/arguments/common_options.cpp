#include "ctl/arguments/common_options.h"

#include <CLI/CLI.hpp>

#include "ctl/arguments/numbers.h"
#include "ctl/arguments/words.h"

namespace tolvane::ctl {

void declarePatch(CLI::App& command, std::string& path) {
  command.add_option("--patch", path, "the patch file")->required()->transform(name())->type_name("FILE");
}

void declareDevice(CLI::App& command, std::string& device, const std::string& purpose) {
  command.add_option("--device", device, purpose + ": name, part of it, id, or uid")
      ->transform(name())
      ->type_name("NAME|ID|UID");
}

void declareWait(CLI::App& command, double& seconds) {
  command.add_option("--wait", seconds, "how long to wait for sound servers and devices")
      ->check(requireWait)
      ->type_name("SECONDS")
      ->capture_default_str();
}

}  // namespace tolvane::ctl
