#include "ctl/check/options.h"

#include <CLI/CLI.hpp>

#include "ctl/arguments/common_options.h"
#include "ctl/arguments/words.h"
#include "ctl/check/command.h"

namespace tolvane::ctl {

void declareCheck(CLI::App& program, CheckOptions& options, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("check", "Print the routes of patch files, or what is wrong");
  command->add_option("FILE", options.paths, "patch files")->required()->transform(name());
  declareDevice(*command, options.device, "also the names of this device's channels");
  declareWait(*command, options.waitSeconds);
  command->callback([&] { status = checkCommand(options); });
}

}  // namespace tolvane::ctl
