#include "ctl/run/command.h"

#include <chrono>
#include <csignal>

#include <unistd.h>

#include "ctl/devices/choice.h"
#include "ctl/process/resource_check.h"
#include "ctl/process/service_manager.h"
#include "ctl/run/door_plan.h"
#include "ctl/run/live_session.h"
#include "ctl/run/run_reports.h"

namespace tolvane::ctl {

ExitStatus runCommand(const RunOptions& options) {
  const auto doors = planDoors(options);
  if (!doors) return fail(doors.error());
  // Before the SignalPipe catches signals: while this blocks on a FIFO without a writer, a signal must simply
  // end the process.
  PatchSource patch(options.patchPath);
  const PatchResult routes = patch.load();
  if (!routes) return fail(routes.error());
  if (const auto note = unheardRoutesNote(patch.path(), routes.value())) say(*note);

  if (const auto failure = tooFewResources()) return fail(*failure);
  // Before the HAL starts threads: they inherit the blocked signals.
  const SignalPipe signals({SIGINT, SIGTERM, SIGQUIT, SIGHUP});
  const ServiceManager manager;
  manager.tellStatus(options.device.empty() ? "waiting for a device" : "waiting for " + options.device);
  WaitReports waitReports(manager);
  bool isEnded = false;
  bool isHungUp = false;
  const DeviceChoice choice = awaitDeviceToRun(options.device, options.waitSeconds, [&] {
    while (const auto signal = signals.next()) (*signal == SIGHUP ? isHungUp : isEnded) = true;
    waitReports.tell(std::chrono::steady_clock::now());
    return isEnded;
  });
  if (isEnded) return ExitStatus::done;
  if (!choice) return fail(choice.error());
  if (isHungUp) ::kill(::getpid(), SIGHUP);  // the session will take it and reload the patch
  AudioDeviceInfo device = choice.value();
  if (const auto failure = applySettings(device, options.settings)) return fail(*failure);
  return LiveSession(options, device, patch, routes.value(), signals, manager, doors.value()).run();
}

}  // namespace tolvane::ctl
