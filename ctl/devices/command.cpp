#include "ctl/devices/command.h"

#include <cstdio>

#include "ctl/devices/channels.h"
#include "ctl/devices/choice.h"
#include "ctl/devices/list.h"
#include "ctl/devices/watch.h"
#include "ctl/process/resource_check.h"
#include "ctl/terminal/messages.h"

namespace tolvane::ctl {

namespace {

void printDevices(const DevicesOptions& options, const std::vector<AudioDeviceInfo>& devices) {
  std::string text;
  if (options.channels) {
    const std::vector<DeviceChannels> channels = channelDetailsOf(devices);
    text = options.json ? channelJson(channels) : channelTable(channels);
  } else {
    const std::vector<DeviceDetails> details = detailsOf(devices);
    const TableForm form = options.longForm ? TableForm::longer : TableForm::usual;
    text = options.json ? deviceJson(details) : deviceTable(details, form);
  }
  std::fputs(text.c_str(), stdout);
}

ExitStatus channelsOfOne(const DevicesOptions& options) {
  const DeviceChoice device = awaitDevice(options.device, options.waitSeconds, [] { return false; });
  if (!device) return fail(device.error());
  printDevices(options, {device.value()});
  return ExitStatus::done;
}

}  // namespace

ExitStatus devicesCommand(const DevicesOptions& options) {
  if (options.watch) return watchDevices(options);
  if (const auto failure = tooFewResources()) return fail(*failure);
  if (!options.device.empty()) return channelsOfOne(options);
  const DeviceListingResult listing = awaitAllDevices(options.waitSeconds);
  if (!listing) return fail(listing.error());
  printDevices(options, listing.value().devices);
  return listing.value().silentServers.empty() ? ExitStatus::done : fail(silenceOf(listing.value()));
}

}  // namespace tolvane::ctl
