#include "ctl/render/options.h"

#include <CLI/CLI.hpp>

#include "ctl/arguments/common_options.h"
#include "ctl/arguments/numbers.h"
#include "ctl/arguments/words.h"
#include "ctl/render/command.h"

namespace tolvane::ctl {

namespace {

std::string refuseStandardOutput(const std::string& path) {
  return path == "-" ? "the result goes to a file, under its name only when it is whole" : "";
}

}  // namespace

void declareRender(CLI::App& program, RenderOptions& options, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("render", "Send a sound file through a patch into a new file");
  declarePatch(*command, options.patchPath);
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

}  // namespace tolvane::ctl
