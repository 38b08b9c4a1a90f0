#include "ctl/soak/command.h"

#include <cerrno>
#include <csignal>
#include <cstdio>

#include "ctl/devices/choice.h"
#include "ctl/devices/property.h"
#include "ctl/files/atomic_file.h"
#include "ctl/process/resource_check.h"
#include "ctl/soak/session.h"
#include "ctl/terminal/messages.h"
#include "ctl/terminal/printable.h"
#include "ctl/terminal/text_table.h"

namespace tolvane::ctl {

namespace {

/// Lets a device without hardware return its outputs, and run as fast as asked.
std::optional<Failure> rehearse(const AudioDeviceInfo& device, bool fullSpeed) {
  const AudioObjectPropertyAddress address = globalAddress(kTolvaneDevicePropertyRehearsal);
  const TolvaneRehearsal rehearsal{fullSpeed ? 1U : 0U, 1U};
  const OSStatus status =
      AudioObjectSetPropertyData(device.id, &address, 0, nullptr, sizeof rehearsal, &rehearsal);
  if (status == noErr || !fullSpeed) return std::nullopt;
  return Failure{about(device.name, "has no full speed; the virtual device has")};
}

void print(const Facts& facts) {
  TextTable table({{"soak"}, {""}});
  for (const auto& [fact, value] : facts) table.addRow({fact, value});
  std::fputs(table.text().c_str(), stdout);
  std::fflush(stdout);
}

}  // namespace

ExitStatus soakCommand(const SoakOptions& options) {
  if (const auto failure = tooFewResources()) return fail(*failure);
  // Before the HAL starts threads: they inherit the blocked signals.
  const SignalPipe signals({SIGINT, SIGTERM, SIGQUIT, SIGHUP});
  bool isEnded = false;
  const DeviceChoice device = awaitDeviceToRun(options.device, options.waitSeconds, [&] {
    while (signals.next()) isEnded = true;
    return isEnded;
  });
  if (isEnded) return ExitStatus::done;
  if (!device) return fail(device.error());
  if (device.value().inputChannels < 1 || device.value().outputChannels < 1) {
    return fail({about(device.value().name, "has not both inputs and outputs, so nothing can be routed")});
  }
  // Made first, so that a soak of hours does not end without a place for its report.
  std::optional<AtomicFile> report;
  if (!options.reportPath.empty()) {
    auto created = AtomicFile::create(options.reportPath);
    if (!created) return fail(created.error());
    report.emplace(std::move(created).value());
  }
  if (const auto failure = rehearse(device.value(), options.fullSpeed)) return fail(*failure);

  SoakSession session(options, device.value(), signals);
  say("soaking " + printable(device.value().name));
  if (const auto failure = session.run()) return fail(*failure);
  print(soakFacts(session.result(), session.checker()));
  if (report) {
    if (!report->write(soakPage(session.result(), session.checker())))
      return fail(systemFailure(options.reportPath, errno));
    if (const auto failure = report->commit()) return fail(*failure);
  }
  const std::string wrong = session.result().failure(session.checker().loops());
  if (wrong.empty()) return ExitStatus::done;
  return fail({about(device.value().name, wrong)});
}

}  // namespace tolvane::ctl
