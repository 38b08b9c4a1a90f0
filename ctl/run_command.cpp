#include "ctl/run_command.h"

#include <csignal>

#include "ctl/buffer_size.h"
#include "ctl/device_choice.h"
#include "ctl/live_session.h"

namespace tolvane::ctl {

ExitStatus runCommand(const RunOptions& options) {
  // First of all, so that no thread of the HAL ever takes a signal.
  SignalPipe signals({SIGINT, SIGTERM, SIGHUP});
  PatchSource patch(options.patchPath);
  const PatchResult routes = patch.load();
  if (!routes) return fail(routes.error());
  if (const auto note = unheardRoutesNote(patch.path(), routes.value())) say(*note);

  const DeviceChoice device = chooseDevice(CoreAudioEngine().getAllDevices(), options.device);
  if (!device) return fail(device.error());
  if (options.bufferFrames) {
    if (const auto failure = setBufferFrames(device.value(), *options.bufferFrames)) return fail(*failure);
  }
  return LiveSession(options, device.value(), patch, routes.value(), signals).run();
}

}  // namespace tolvane::ctl
