#include "ctl/devices/options.h"

#include <CLI/CLI.hpp>

#include "ctl/arguments/common_options.h"
#include "ctl/devices/command.h"

namespace tolvane::ctl {

void declareDevices(CLI::App& program, DevicesOptions& options, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("devices", "List the audio devices");
  command->add_flag("--json", options.json, "as a JSON array; with --watch one object a line");
  command->add_flag("--watch", options.watch, "then tell of those that come and go");
  declareWait(*command, options.waitSeconds);
  command->callback([&] { status = devicesCommand(options); });
}

}  // namespace tolvane::ctl
