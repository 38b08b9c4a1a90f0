#include "ctl/command_line.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "ctl/aggregate_command.h"
#include "ctl/check_command.h"
#include "ctl/devices_command.h"
#include "ctl/messages.h"
#include "ctl/render_command.h"
#include "ctl/run_command.h"

namespace tolvane::ctl {

namespace {

constexpr const char* kPatchHelp = "the patch file";

/// What the arguments are read into.
struct Arguments {
  DevicesOptions devices;
  std::vector<std::string> checkedPaths;
  RenderOptions render;
  RunOptions run;
  AggregateOptions aggregate;
};

void declareDevices(CLI::App& program, Arguments& arguments, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("devices", "List the audio devices");
  command->add_flag("--json", arguments.devices.json, "as a JSON array; with --watch one object a line");
  command->add_flag("--watch", arguments.devices.watch, "then tell of those that come and go");
  command->callback([&] { status = devicesCommand(arguments.devices); });
}

void declareCheck(CLI::App& program, Arguments& arguments, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("check", "Print the routes of patch files, or what is wrong");
  command->add_option("FILE", arguments.checkedPaths, "patch files")->required();
  command->callback([&] { status = checkCommand(arguments.checkedPaths); });
}

std::string refuseStandardOutput(const std::string& path) {
  return path == "-" ? "the result goes to a file, under its name only when it is whole" : "";
}

void declareRender(CLI::App& program, Arguments& arguments, ExitStatus& status) {
  RenderOptions& options = arguments.render;
  CLI::App* command = program.add_subcommand("render", "Send a sound file through a patch into a new file");
  command->add_option("--patch", options.patchPath, kPatchHelp)->required()->type_name("FILE");
  command->add_option("--outputs", options.outputChannels, "channels of OUT [the highest routed output]")
      ->check(CLI::Range(1, 1024))
      ->type_name("N");
  command->add_option("--buffer", options.bufferFrames, "frames a cycle; OUT does not depend on it")
      ->check(CLI::Range(1, 65536))
      ->type_name("FRAMES")
      ->capture_default_str();
  command->add_option("IN", options.inputPath, "a sound file of any common format")->required();
  command->add_option("OUT", options.outputPath, "the new WAV file, 32-bit float")
      ->required()
      ->check(refuseStandardOutput);
  command->callback([&] { status = renderCommand(options); });
}

std::string requireSensibleSeconds(const std::string& text) {
  double seconds = 0.0;
  const bool isNumber = CLI::detail::lexical_cast(text, seconds);
  const bool sensible = isNumber && std::isfinite(seconds) && seconds > 0.0 && seconds <= 1e9;
  return sensible ? "" : text + " is not a number of seconds above 0";
}

void declareRun(CLI::App& program, Arguments& arguments, ExitStatus& status) {
  RunOptions& options = arguments.run;
  CLI::App* command = program.add_subcommand("run", "Route live until SIGINT or SIGTERM; SIGHUP reloads");
  command->add_option("--patch", options.patchPath, kPatchHelp)->required()->type_name("FILE");
  command->add_option("--device", options.device, "name, part of a name, or id [the first device]")
      ->type_name("NAME|ID");
  command->add_option("--buffer", options.bufferFrames, "frames a cycle, set on the device [as it is]")
      ->check(CLI::Range(1, 65536))
      ->type_name("FRAMES");
  command->add_flag("--watch", options.watch, "take over the patch whenever its file changes");
  command->add_flag("--meters", options.meters, "show the levels of the routed channels");
  command->add_option("--seconds", options.seconds, "stop by itself after this time")
      ->check(requireSensibleSeconds)
      ->type_name("N");
  command->callback([&] { status = runCommand(options); });
}

void declareAggregate(CLI::App& program, Arguments& arguments, ExitStatus& status) {
  AggregateOptions& options = arguments.aggregate;
  CLI::App* command = program.add_subcommand("aggregate", "Use several devices as one");
  command->require_subcommand(1);
  CLI::App* list = command->add_subcommand("list", "List the aggregates and the channels of their devices");
  list->add_flag("--json", options.json, "as a JSON array");
  list->callback([&] { status = aggregateListCommand(options); });
  CLI::App* create = command->add_subcommand("create", "Make one of devices, in this order");
  create->add_option("NAME", options.name, "what it is to be called")->required();
  create->add_option("DEVICE", options.devices, "names, identifiers, or lasting identities")->required();
  create->callback([&] { status = aggregateCreateCommand(options); });
  CLI::App* remove = command->add_subcommand("delete", "Forget one; its devices stay");
  remove->add_option("NAME", options.name, "what it is called")->required();
  remove->callback([&] { status = aggregateDeleteCommand(options); });
}

ExitStatus afterParseError(const CLI::App& program, const CLI::ParseError& error) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    program.exit(error);  // help or version, on standard output
    return ExitStatus::done;
  }
  say(error.what());
  say("try 'tolvanectl --help'");
  return ExitStatus::usage;
}

}  // namespace

ExitStatus runCommandLine(int argc, char** argv) {
  CLI::App program("Route the channels of an audio device, without a window", "tolvanectl");
  program.set_version_flag("--version", "tolvanectl " TOLVANE_VERSION);
  program.require_subcommand(1);
  program.get_formatter()->column_width(28);
  Arguments arguments;
  ExitStatus status = ExitStatus::done;
  declareDevices(program, arguments, status);
  declareCheck(program, arguments, status);
  declareRender(program, arguments, status);
  declareRun(program, arguments, status);
  declareAggregate(program, arguments, status);
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return afterParseError(program, error);
  }
  return status;
}

}  // namespace tolvane::ctl
