#include "ctl/soak/options.h"

#include <CLI/CLI.hpp>

#include "ctl/arguments/common_options.h"
#include "ctl/arguments/numbers.h"
#include "ctl/arguments/words.h"
#include "ctl/soak/command.h"

namespace tolvane::ctl {

void declareSoak(CLI::App& program, SoakOptions& options, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("soak", "Test a device and the routing for a long time");
  declareDevice(*command, options.device, "the device [the first one]");
  declareWait(*command, options.waitSeconds);
  command->add_option("--minutes", options.minutes, "how long [10]")
      ->check(requireSensibleMinutes)
      ->type_name("N");
  command->add_option("--edits-per-minute", options.editsPerMinute, "changes of the routes [600]")
      ->transform(wholeNumber(0, 1'000'000))
      ->type_name("N");
  command->add_option("--report", options.reportPath, "write a page with the results and pictures")
      ->transform(name())
      ->type_name("FILE.html");
  command->add_flag("--full-speed", options.fullSpeed, "without pauses; the virtual device only");
  command->callback([&] { status = soakCommand(options); });
}

}  // namespace tolvane::ctl
