#include "ctl/devices/watch.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string>

#include <poll.h>

#include "ctl/devices/property.h"
#include "ctl/devices/wait.h"
#include "ctl/process/resource_check.h"
#include "ctl/process/signal_pipe.h"
#include "ctl/terminal/messages.h"

namespace tolvane::ctl {

namespace {

bool isSame(const AudioDeviceInfo& a, const AudioDeviceInfo& b) {
  return a.id == b.id && a.name == b.name && a.inputChannels == b.inputChannels &&
         a.outputChannels == b.outputChannels;
}

/// The devices of `all` that `others` does not have.
std::vector<DeviceDetails> missing(const std::vector<DeviceDetails>& all,
                                   const std::vector<DeviceDetails>& others) {
  std::vector<DeviceDetails> missing;
  for (const DeviceDetails& device : all) {
    const bool there = std::any_of(others.begin(), others.end(), [&](const DeviceDetails& other) {
      return isSame(device.info, other.info);
    });
    if (!there) missing.push_back(device);
  }
  return missing;
}

/// The last printed state of the list.
class WatchedList {
 public:
  WatchedList(const DevicesOptions& options, const DeviceListing& listing)
      : json_(options.json),
        form_(options.longForm ? TableForm::longer : TableForm::usual),
        devices_(detailsOf(listing.devices)) {}

  void printAll() const {
    if (!json_) {
      print(deviceTable(devices_, form_));
    } else {
      for (const DeviceDetails& device : devices_) print(deviceEventJson("present", device));
    }
  }

  void printChanges() {
    const DeviceListingResult listing = awaitAllDevices(0.0);
    if (!listing) return;  // a failed listing does not tell which devices are gone
    std::vector<DeviceDetails> now = detailsOf(listing.value().devices);
    const DeviceChanges changes = changesBetween(devices_, now);
    for (const DeviceDetails& device : changes.departed) printEvent("departed", device);
    for (const DeviceDetails& device : changes.arrived) printEvent("arrived", device);
    devices_ = std::move(now);
  }

 private:
  static void print(const std::string& text) { std::fputs(text.c_str(), stdout); }

  void printEvent(const char* event, const DeviceDetails& device) const {
    print(json_ ? deviceEventJson(event, device) : deviceEventLine(event, device, form_));
  }

  const bool json_;
  const TableForm form_;
  std::vector<DeviceDetails> devices_;
};

bool flushed() {
  return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

/// Sleeps until the list may have changed. Returns false if a signal came.
bool awaitChange(const SignalPipe& signals, const DeviceListEvents& events) {
  for (;;) {
    pollfd sources[] = {{signals.descriptor(), POLLIN, 0}, {events.descriptor(), POLLIN, 0}};
    ::poll(sources, std::size(sources), -1);
    if (signals.next()) return false;
    if (events.take()) return true;
  }
}

}  // namespace

DeviceListEvents::DeviceListEvents() {
  const AudioObjectPropertyAddress address = globalAddress(kAudioHardwarePropertyDevices);
  status_ = AudioObjectAddPropertyListener(kAudioObjectSystemObject, &address, &DeviceListEvents::told, this);
}

DeviceListEvents::~DeviceListEvents() {
  const AudioObjectPropertyAddress address = globalAddress(kAudioHardwarePropertyDevices);
  AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &address, &DeviceListEvents::told, this);
}

bool DeviceListEvents::take() const {
  bool any = false;
  while (wake_.next()) any = true;
  return any;
}

OSStatus DeviceListEvents::told(AudioObjectID /*system*/, UInt32 /*count*/,
                                const AudioObjectPropertyAddress* /*addresses*/, void* clientData) {
  static_cast<const DeviceListEvents*>(clientData)->wake_.wake(1);
  return noErr;
}

DeviceChanges changesBetween(const std::vector<DeviceDetails>& before,
                             const std::vector<DeviceDetails>& now) {
  return {missing(before, now), missing(now, before)};
}

ExitStatus watchDevices(const DevicesOptions& options) {
  if (const auto failure = tooFewResources()) return fail(*failure);
  // Before the HAL starts threads: they inherit the blocked signals.
  const SignalPipe signals({SIGINT, SIGTERM});
  const DeviceListEvents events;
  bool isEnded = false;
  const DeviceListingResult listing = awaitDevices(options.waitSeconds, [&](const DeviceListing& present) {
    isEnded = signals.next().has_value();
    return isEnded || present.silentServers.empty();
  });
  if (!listing) return fail(listing.error());
  if (events.status() != noErr) return fail({"the list cannot be watched: " + statusText(events.status())});
  WatchedList list(options, listing.value());
  list.printAll();
  if (!isEnded && !listing.value().silentServers.empty()) say(silenceOf(listing.value()).text);
  while (flushed()) {
    if (isEnded || !awaitChange(signals, events)) return ExitStatus::done;
    list.printChanges();
  }
  return ExitStatus::failed;  // main() reports it
}

}  // namespace tolvane::ctl
