#include "ctl/run/options.h"

#include <CLI/CLI.hpp>

#include "ctl/arguments/common_options.h"
#include "ctl/arguments/numbers.h"
#include "ctl/arguments/words.h"
#include "ctl/run/command.h"

namespace tolvane::ctl {

void declareRun(CLI::App& program, RunOptions& options, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("run", "Route live until SIGINT or SIGTERM; SIGHUP reloads");
  declarePatch(*command, options.patchPath);
  declareDevice(*command, options.device, "the device [the first one]");
  declareWait(*command, options.waitSeconds);
  command
      ->add_option("--rate", options.settings.sampleRateHz, "samples a second, set on the device [as it is]")
      ->transform(wholeNumber(1, 1'000'000))
      ->type_name("HZ");
  command
      ->add_option("--buffer", options.settings.bufferFrames, "frames a cycle, set on the device [as it is]")
      ->transform(wholeNumber(1, 65536))
      ->type_name("FRAMES");
  command->add_option("--periods", options.settings.periods, "buffers that the hardware holds [as it is]")
      ->transform(wholeNumber(2, 1024))
      ->type_name("N");
  command->add_flag("--watch", options.watch, "take over the patch whenever its file changes");
  command->add_flag("--meters", options.meters, "show the levels of the routed channels");
  command->add_option("--seconds", options.seconds, "stop by itself after this time")
      ->check(requireSensibleSeconds)
      ->type_name("N");
  command->add_option("--osc", options.osc, "take control messages by OSC over UDP [closed]")
      ->transform(name())
      ->type_name("[ADDRESS:]PORT");
  command->add_option("--http", options.http, "serve a page for browsers, and a WebSocket [closed]")
      ->transform(name())
      ->type_name("[ADDRESS:]PORT");
  command->add_option("--tls-cert", options.tlsCertificate, "encrypt --http with this certificate (PEM)")
      ->transform(name())
      ->type_name("FILE");
  command->add_option("--tls-key", options.tlsKey, "the certificate's key (PEM)")
      ->transform(name())
      ->type_name("FILE");
  command->add_option("--token-file", options.tokenPath, "what clients must know; mode 0600")
      ->transform(name())
      ->type_name("FILE");
  command->add_option("--scenes", options.sceneFolder, "a folder of patch files to recall and to save")
      ->transform(name())
      ->type_name("DIR");
  command->add_option("--ramp", options.rampMs, "how long a change of the routes takes [0: one cycle]")
      ->transform(wholeNumber(0, 10'000))
      ->type_name("MS");
  command->callback([&] { status = runCommand(options); });
}

}  // namespace tolvane::ctl
