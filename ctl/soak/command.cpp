#include "ctl/soak/command.h"

#include <csignal>
#include <cstdio>

#include <unistd.h>

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

std::optional<Failure> writeAll(int descriptor, const std::string& path, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t written = ::write(descriptor, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return systemFailure(path, errno);
    done += static_cast<std::size_t>(written);
  }
  return std::nullopt;
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
  const DeviceChoice device = awaitDevice(options.device, options.waitSeconds, [&] {
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
    auto failure =
        writeAll(report->descriptor(), options.reportPath, soakPage(session.result(), session.checker()));
    if (!failure) failure = report->commit();
    if (failure) return fail(*failure);
  }
  const std::string wrong = session.result().failure(session.checker().loops());
  if (wrong.empty()) return ExitStatus::done;
  return fail({about(device.value().name, wrong)});
}

}  // namespace tolvane::ctl
