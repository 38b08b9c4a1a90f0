// The registry's supervising thread. Sessions record events in atomic fields and wake nobody, because an IO
// thread may be the one that records. The supervising thread polls these fields while anything is started.
#include <new>
#include <system_error>

#include "hal/registry/registry.h"
#include "hal/support/thread.h"
#include "hal/surface/removed_links.h"

namespace tolvane::hal {

namespace {

using namespace std::chrono_literals;

constexpr auto kLookInterval = 10ms;
// How often a driver is asked for a lost device.
constexpr auto kAskInterval = 500ms;

AudioObjectPropertyAddress addressOf(AudioObjectPropertySelector selector,
                                     AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal) {
  return {selector, scope, kAudioObjectPropertyElementMain};
}

}  // namespace

/// Makes the thread if there is none yet; false if the system has none left.
bool Registry::beSupervised() {
  const std::lock_guard lock(wakeMutex_);
  if (!supervised_) supervised_ = runDetached("tolvane-hal", [this] { supervise(); });
  return supervised_;
}

/// If the thread cannot be made, nothing is started either; the change then waits for the next list or the
/// next start.
void Registry::wake() {
  beSupervised();
  {
    const std::lock_guard lock(wakeMutex_);
    wake_ = true;
  }
  woken_.notify_one();
}

void Registry::supervise() {
  for (;;) {
    bool started = true;
    try {
      started = superviseOnce(Clock::now());
    } catch (const std::bad_alloc&) {     // try again
    } catch (const std::system_error&) {  // likewise
    }
    std::unique_lock lock(wakeMutex_);
    if (started) {
      woken_.wait_for(lock, kLookInterval, [this] { return wake_; });
    } else {
      woken_.wait(lock, [this] { return wake_; });
    }
    wake_ = false;
  }
}

/// Returns true if anything is started; the caller then repeats this soon.
bool Registry::superviseOnce(Clock::time_point now) {
  catalog_.askTheChanged();
  std::vector<RegistrationRef> started;
  for (const RegistrationRef& registration : registrations()) {
    if (registration->presence() != Registration::Presence::idle) started.push_back(registration);
  }
  askAfterLost(started, now);
  for (const RegistrationRef& registration : started) registration->supervise(now);
  publishChanges();
  return !started.empty();
}

void Registry::askAfterLost(const std::vector<RegistrationRef>& registrations, Clock::time_point now) {
  if (now - lastAskedAfterLost_ < kAskInterval) return;
  for (const RegistrationRef& registration : registrations) {
    if (registration->presence() != Registration::Presence::lost) continue;
    lastAskedAfterLost_ = now;
    catalog_.ask(registration->device()->poller());
  }
}

/// Posts all changes. A call that changes something posts the change before it returns, so a listener added
/// after it does not hear of the change.
void Registry::publishChanges() {
  const std::lock_guard lock(publishing_);
  if (catalog_.takeListChange()) {
    notifier_.post(kAudioObjectSystemObject, addressOf(kAudioHardwarePropertyDevices));
  }
  for (const auto& device : catalog_.devices()) {
    for (const AudioObjectPropertySelector selector : device->takeChanges(alive(*device))) {
      if (selector != kAudioDevicePropertyStreamConfiguration &&
          selector != kTolvaneDevicePropertyRemovedLinks) {
        notifier_.post(device->id(), addressOf(selector));
        continue;
      }
      notifier_.post(device->id(), addressOf(selector, kAudioObjectPropertyScopeInput));
      notifier_.post(device->id(), addressOf(selector, kAudioObjectPropertyScopeOutput));
    }
    for (const AudioObjectPropertyAddress& renamed : device->takeRenames()) {
      notifier_.post(device->id(), renamed);
    }
  }
}

}  // namespace tolvane::hal
