#include "ctl/devices/command.h"

#include <cstdio>

#include "ctl/devices/list.h"
#include "ctl/devices/watch.h"
#include "ctl/process/resource_check.h"
#include "ctl/terminal/messages.h"

namespace tolvane::ctl {

ExitStatus devicesCommand(const DevicesOptions& options) {
  if (options.watch) return watchDevices(options.json, options.waitSeconds);
  if (const auto failure = tooFewResources()) return fail(*failure);
  const DeviceListingResult listing = awaitAllDevices(options.waitSeconds);
  if (!listing) return fail(listing.error());
  const std::vector<DeviceDetails> devices = detailsOf(listing.value().devices);
  std::fputs((options.json ? deviceJson(devices) : deviceTable(devices)).c_str(), stdout);
  return listing.value().silentServers.empty() ? ExitStatus::done : fail(silenceOf(listing.value()));
}

}  // namespace tolvane::ctl
