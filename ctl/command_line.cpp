#include "ctl/command_line.h"

#include <algorithm>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "ctl/aggregate/options.h"
#include "ctl/arguments/words.h"
#include "ctl/check/options.h"
#include "ctl/devices/options.h"
#include "ctl/remote/options.h"
#include "ctl/render/options.h"
#include "ctl/run/options.h"
#include "ctl/soak/options.h"
#include "ctl/terminal/messages.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

/// The parsed arguments of all commands.
struct Arguments {
  DevicesOptions devices;
  CheckOptions check;
  RenderOptions render;
  RunOptions run;
  SoakOptions soak;
  AggregateOptions aggregate;
  RemoteOptions remote;
};

/// The message if a command or subcommand is missing or unknown; empty if one was given.
std::string missingCommand(const CLI::App& program) {
  const auto given = program.get_subcommands();
  const CLI::App& last = given.empty() ? program : *given.front();
  std::string commands;
  for (const CLI::App* command : last.get_subcommands([](const CLI::App*) { return true; }))
    commands += (commands.empty() ? "" : ", ") + command->get_name();
  if (commands.empty() || !last.get_subcommands().empty()) return {};
  const std::vector<std::string> others = program.remaining(true);
  const std::string problem =
      others.empty() ? "a command is missing" : '"' + others.front() + "\" is no command";
  return problem + "; the commands are " + commands;
}

ExitStatus afterParseError(const CLI::App& program, const CLI::ParseError& error) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    program.exit(error);  // help or version, on standard output
    return ExitStatus::done;
  }
  const std::string missing = missingCommand(program);
  say(printable(withoutMarks(missing.empty() ? error.what() : missing)));
  say("try 'tolvanectl --help'");
  return ExitStatus::usage;
}

}  // namespace

ExitStatus runCommandLine(int argc, char** argv) {
  CLI::App program("Route the channels of an audio device, without a window", "tolvanectl");
  program.set_version_flag("--version", "tolvanectl " TOLVANE_VERSION);
  program.require_subcommand(1);
  program.get_formatter()->column_width(28);
  std::vector<std::string> words(static_cast<std::size_t>(argc));
  std::transform(argv, argv + argc, words.begin(), [](const char* word) { return marked(word); });
  std::vector<const char*> pointers(words.size());
  std::transform(words.begin(), words.end(), pointers.begin(),
                 [](const std::string& word) { return word.c_str(); });
  Arguments arguments;
  ExitStatus status = ExitStatus::done;
  declareDevices(program, arguments.devices, status);
  declareCheck(program, arguments.check, status);
  declareRender(program, arguments.render, status);
  declareRun(program, arguments.run, status);
  declareSoak(program, arguments.soak, status);
  declareAggregate(program, arguments.aggregate, status);
  declareRemote(program, arguments.remote, status);
  try {
    program.parse(static_cast<int>(pointers.size()), pointers.data());
  } catch (const CLI::ParseError& error) {
    return afterParseError(program, error);
  }
  return status;
}

}  // namespace tolvane::ctl
