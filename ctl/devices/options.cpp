#include "ctl/devices/options.h"

#include <CLI/CLI.hpp>

#include "ctl/arguments/common_options.h"
#include "ctl/arguments/words.h"
#include "ctl/devices/command.h"

namespace tolvane::ctl {

void declareDevices(CLI::App& program, DevicesOptions& options, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("devices", "List the audio devices");
  command->add_flag("--json", options.json, "as a JSON array; with --watch one object a line");
  command->add_flag("--long", options.longForm, "with the lasting identities");
  CLI::Option* channels =
      command->add_flag("--channels", options.channels, "the channels of all devices, or of the one named");
  command
      ->add_option("NAME", options.device, "the device whose channels to list: name, part of it, id, or uid")
      ->needs(channels)
      ->transform(name());
  command->add_flag("--watch", options.watch, "then tell of those that come and go")->excludes(channels);
  declareWait(*command, options.waitSeconds);
  command->callback([&] { status = devicesCommand(options); });
}

}  // namespace tolvane::ctl
