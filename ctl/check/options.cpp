#include "ctl/check/options.h"

#include <CLI/CLI.hpp>

#include "ctl/arguments/words.h"
#include "ctl/check/command.h"

namespace tolvane::ctl {

void declareCheck(CLI::App& program, std::vector<std::string>& paths, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("check", "Print the routes of patch files, or what is wrong");
  command->add_option("FILE", paths, "patch files")->required()->transform(name());
  command->callback([&] { status = checkCommand(paths); });
}

}  // namespace tolvane::ctl
