#include "ctl/command_line.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "ctl/aggregate/command.h"
#include "ctl/check/command.h"
#include "ctl/devices/command.h"
#include "ctl/render/command.h"
#include "ctl/run/command.h"
#include "ctl/terminal/messages.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

constexpr const char* kPatchHelp = "the patch file";

// The argument library parses "[a,b]" as a list and ignores "". Appending this mark makes either a plain
// word.
constexpr char kWordMark = '\x1F';

std::string marked(const std::string& word) {
  const bool looksLikeAList = word.starts_with('[') && word.ends_with(']');
  return word.empty() || looksLikeAList || word.ends_with(kWordMark) ? word + kWordMark : word;
}

std::string withoutMarks(std::string text) {
  for (std::size_t at = text.find(kWordMark); at != std::string::npos; at = text.find(kWordMark, at))
    text.erase(at, 1);
  return text;
}

/// Takes a word as a name: removes its mark and refuses an empty one.
CLI::Validator name() {
  const auto check = [](std::string& text) {
    if (text.ends_with(kWordMark)) text.pop_back();
    return text.empty() ? std::string("the name cannot be empty") : std::string();
  };
  return {check, ""};
}

/// Takes decimal digits only: a leading 0 does not mean octal.
CLI::Validator wholeNumber(int lowest, int highest) {
  const auto check = [lowest, highest](std::string& text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < lowest || number > highest) {
      return '"' + text + "\" is not a whole number from " + std::to_string(lowest) + " to " +
             std::to_string(highest);
    }
    text = std::to_string(number);
    return std::string();
  };
  return {check, ""};
}

/// The parsed arguments of all commands.
struct Arguments {
  DevicesOptions devices;
  std::vector<std::string> checkedPaths;
  RenderOptions render;
  RunOptions run;
  AggregateOptions aggregate;
};

constexpr double kMostSeconds = 1e9;

/// The number of seconds; none if the text is no decimal number or is above kMostSeconds. std::strtod() alone
/// would accept hexadecimal numbers, infinity and trailing text.
std::optional<double> secondsOf(const std::string& text) {
  char* end = nullptr;
  const double seconds = std::strtod(text.c_str(), &end);
  const bool isDecimal = text.find_first_not_of("0123456789.eE+-") == std::string::npos;
  const bool isNumber = !text.empty() && isDecimal && end == text.c_str() + text.size();
  return isNumber && seconds <= kMostSeconds ? std::optional(seconds) : std::nullopt;
}

std::string requireWait(const std::string& text) {
  if (secondsOf(text).value_or(-1.0) >= 0.0) return "";
  return '"' + text + "\" is not a number of seconds from 0 to 1000000000";
}

std::string requireSensibleSeconds(const std::string& text) {
  if (secondsOf(text).value_or(0.0) > 0.0) return "";
  return '"' + text + "\" is not a number of seconds above 0 and up to 1000000000";
}

void declareWait(CLI::App& command, double& seconds) {
  command.add_option("--wait", seconds, "how long to wait for sound servers and devices")
      ->check(requireWait)
      ->type_name("SECONDS")
      ->capture_default_str();
}

void declareDevices(CLI::App& program, Arguments& arguments, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("devices", "List the audio devices");
  command->add_flag("--json", arguments.devices.json, "as a JSON array; with --watch one object a line");
  command->add_flag("--watch", arguments.devices.watch, "then tell of those that come and go");
  declareWait(*command, arguments.devices.waitSeconds);
  command->callback([&] { status = devicesCommand(arguments.devices); });
}

void declareCheck(CLI::App& program, Arguments& arguments, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("check", "Print the routes of patch files, or what is wrong");
  command->add_option("FILE", arguments.checkedPaths, "patch files")->required()->transform(name());
  command->callback([&] { status = checkCommand(arguments.checkedPaths); });
}

std::string refuseStandardOutput(const std::string& path) {
  return path == "-" ? "the result goes to a file, under its name only when it is whole" : "";
}

void declareRender(CLI::App& program, Arguments& arguments, ExitStatus& status) {
  RenderOptions& options = arguments.render;
  CLI::App* command = program.add_subcommand("render", "Send a sound file through a patch into a new file");
  command->add_option("--patch", options.patchPath, kPatchHelp)
      ->required()
      ->transform(name())
      ->type_name("FILE");
  command
      ->add_option("--outputs", options.outputChannels,
                   "channels of OUT, 1 to 1024 [the highest routed output]")
      ->transform(wholeNumber(1, 1024))
      ->type_name("N");
  command->add_option("--buffer", options.bufferFrames, "frames a cycle; OUT does not depend on it")
      ->transform(wholeNumber(1, 65536))
      ->type_name("FRAMES")
      ->capture_default_str();
  command->add_flag("--partial", options.partial, "render what is there of an IN that is cut off");
  command->add_option("IN", options.inputPath, "a sound file of any common format")
      ->required()
      ->transform(name());
  command->add_option("OUT", options.outputPath, "the new WAV file, 32-bit float")
      ->required()
      ->check(refuseStandardOutput)
      ->transform(name());
  command->callback([&] { status = renderCommand(options); });
}

void declareRun(CLI::App& program, Arguments& arguments, ExitStatus& status) {
  RunOptions& options = arguments.run;
  CLI::App* command = program.add_subcommand("run", "Route live until SIGINT or SIGTERM; SIGHUP reloads");
  command->add_option("--patch", options.patchPath, kPatchHelp)
      ->required()
      ->transform(name())
      ->type_name("FILE");
  command->add_option("--device", options.device, "name, part of a name, or id [the first device]")
      ->transform(name())
      ->type_name("NAME|ID");
  declareWait(*command, options.waitSeconds);
  command->add_option("--buffer", options.bufferFrames, "frames a cycle, set on the device [as it is]")
      ->transform(wholeNumber(1, 65536))
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
  declareWait(*list, options.waitSeconds);
  list->callback([&] { status = aggregateListCommand(options); });
  CLI::App* create = command->add_subcommand("create", "Make one of devices, in this order");
  create->add_option("NAME", options.name, "what it is to be called")->required()->transform(name());
  create->add_option("DEVICE", options.devices, "names, identifiers, or lasting identities")
      ->required()
      ->transform(name());
  declareWait(*create, options.waitSeconds);
  create->callback([&] { status = aggregateCreateCommand(options); });
  CLI::App* remove = command->add_subcommand("delete", "Forget one; its devices stay");
  remove->add_option("NAME", options.name, "what it is called")->required()->transform(name());
  remove->callback([&] { status = aggregateDeleteCommand(options); });
}

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
  declareDevices(program, arguments, status);
  declareCheck(program, arguments, status);
  declareRender(program, arguments, status);
  declareRun(program, arguments, status);
  declareAggregate(program, arguments, status);
  try {
    program.parse(static_cast<int>(pointers.size()), pointers.data());
  } catch (const CLI::ParseError& error) {
    return afterParseError(program, error);
  }
  return status;
}

}  // namespace tolvane::ctl
