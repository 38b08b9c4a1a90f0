#include "ctl/run_command.h"

#include <csignal>

#include <unistd.h>

#include "ctl/buffer_size.h"
#include "ctl/device_choice.h"
#include "ctl/live_session.h"
#include "ctl/resource_check.h"

namespace tolvane::ctl {

ExitStatus runCommand(const RunOptions& options) {
  // Before the signals are caught: a FIFO that nobody writes to is left by the plain end of the process.
  PatchSource patch(options.patchPath);
  const PatchResult routes = patch.load();
  if (!routes) return fail(routes.error());
  if (const auto note = unheardRoutesNote(patch.path(), routes.value())) say(*note);

  if (const auto failure = tooFewResources()) return fail(*failure);
  // So that no thread of the HAL ever takes a signal.
  const SignalPipe signals({SIGINT, SIGTERM, SIGQUIT, SIGHUP});
  bool isEnded = false;
  bool isHungUp = false;
  const DeviceChoice device = awaitDevice(options.device, options.waitSeconds, [&] {
    while (const auto signal = signals.next()) (*signal == SIGHUP ? isHungUp : isEnded) = true;
    return isEnded;
  });
  if (isEnded) return ExitStatus::done;
  if (!device) return fail(device.error());
  if (isHungUp) ::kill(::getpid(), SIGHUP);  // for the session, which reads the patch again
  if (options.bufferFrames) {
    if (const auto failure = setBufferFrames(device.value(), *options.bufferFrames)) return fail(*failure);
  }
  return LiveSession(options, device.value(), patch, routes.value(), signals).run();
}

}  // namespace tolvane::ctl
