#include "hal/registry/registry.h"

#include <bit>
#include <cstdlib>
#include <utility>

#include "hal/driver/time_limits.h"
#include "hal/driver_table.h"
#include "hal/support/exhaustion.h"
#include "hal/support/thread.h"
#include "hal/support/utf8.h"

namespace tolvane::hal {

Registry& Registry::shared() {
  // Never destroyed: the threads of devices and listeners may run until the process ends.
  static auto* const registry = new Registry;
  return *registry;
}

Registry::Registry() : catalog_([this] { wake(); }) {}

void Registry::useDrivers(std::vector<std::unique_ptr<Driver>> drivers) {
  std::call_once(driversMade_, [] {});
  catalog_.useDrivers(std::move(drivers));
}

/// The catalog with its drivers. Making them opens the sound servers' libraries, which takes milliseconds.
Catalog& Registry::catalog() {
  std::call_once(driversMade_, [this] { catalog_.useDrivers(makeDrivers()); });
  return catalog_;
}

bool Registry::prefetch() {
  return runDetached("tolvane-list", [this] {
    orExhausted([this] {
      catalog().prefetch();
      return noErr;
    });
  });
}

DeviceListing Registry::listDevices() {
  DeviceListing listing = catalog().askAll();
  publishChanges();
  return listing;
}

bool Registry::alive(const Device& device) const {
  bool running = false;
  for (const RegistrationRef& registration : registrations()) {
    if (registration->device().get() != &device) continue;
    const Registration::Presence presence = registration->presence();
    if (presence == Registration::Presence::lost) return false;
    if (presence == Registration::Presence::there) running = true;
  }
  return running || device.listedAt().has_value();
}

pid_t Registry::ioThread(const Device& device) const {
  for (const RegistrationRef& registration : registrations()) {
    if (registration->device().get() != &device) continue;
    if (const pid_t thread = registration->ioThread(); thread != 0) return thread;
  }
  return 0;
}

std::optional<bool> Registry::isMemoryLocked(const Device& device) const {
  for (const RegistrationRef& registration : registrations()) {
    if (registration->device().get() != &device) continue;
    if (const auto isLocked = registration->isMemoryLocked()) return isLocked;
  }
  return std::nullopt;
}

OSStatus Registry::change(const std::shared_ptr<Device>& device, Change change) {
  return call(
      device->poller(),
      [info = device->info(), change = std::move(change)](Driver& driver) { return change(driver, info); },
      kSettingLimit);
}

std::string Registry::cardUid(const Device& device) const {
  const std::vector<int> cards = device.info().alsaCards;
  const auto held = cards.size() == 1 ? catalog_.heldCard(cards.front()) : std::nullopt;
  return held ? validUtf8(held->info.uid) : "";
}

OSStatus Registry::claim(const std::string& uid) {
  if (catalog_.isListed(uid)) return noErr;
  auto held = catalog_.heldCard(uid);
  if (!held) return kAudioHardwareBadDeviceError;
  return call(
      held->poller, [card = std::move(held->info)](Driver& driver) { return driver.claim(card); },
      kClaimLimit);
}

/// Calls the driver on a thread of its own, and lists its devices anew if it succeeds.
OSStatus Registry::call(const std::shared_ptr<DriverPoller>& poller, std::function<OSStatus(Driver&)> called,
                        std::chrono::milliseconds limit) {
  struct Outcome {
    std::mutex mutex;
    std::condition_variable done;
    std::optional<OSStatus> status;
  };
  const auto outcome = std::make_shared<Outcome>();
  const bool isAsked = runDetached("tolvane-set", [outcome, poller, called = std::move(called)] {
    const OSStatus status = orExhausted([&] { return called(poller->driver()); });
    const std::lock_guard lock(outcome->mutex);
    outcome->status = status;
    outcome->done.notify_all();
  });
  if (!isAsked) return kTolvaneExhaustedError;
  std::unique_lock lock(outcome->mutex);
  if (!outcome->done.wait_for(lock, limit, [&] { return outcome->status.has_value(); })) {
    return kAudioHardwareNotReadyError;
  }
  if (*outcome->status == noErr) catalog_.ask(poller);
  publishChanges();
  return *outcome->status;
}

AudioDeviceIOProcID Registry::createProc(std::shared_ptr<Device> device, AudioDeviceIOProc proc,
                                         void* clientData) {
  auto registration = std::make_shared<Registration>(std::move(device), proc, clientData);
  const std::lock_guard lock(mutex_);
  // A running number, not the address of a function: it only identifies the registration.
  const auto id = std::bit_cast<AudioDeviceIOProcID>(++lastProcId_);
  registrations_[id] = std::move(registration);
  return id;
}

OSStatus Registry::start(AudioObjectID device, AudioDeviceIOProcID procId) {
  const RegistrationRef found = registration(device, procId);
  if (!found) return kAudioHardwareBadDeviceError;
  std::call_once(exitHandled_, [] { std::atexit([] { shared().endAtExit(); }); });
  {
    const std::lock_guard lock(mutex_);
    if (ending_) return kAudioHardwareNotReadyError;
  }
  if (!beSupervised()) return kTolvaneExhaustedError;
  const auto deadline = Clock::now() + kStartLimit;
  awaitLateAnswer(*found->device());
  const OSStatus status = found->start(deadline);
  wake();
  return status;
}

/// A driver that was too late for the last list may be slow, not hung.
void Registry::awaitLateAnswer(const Device& device) {
  const auto poller = device.poller();
  if (device.listedAt() || !poller->overdue()) return;
  if (poller->awaitOverdue(Clock::now() + kSignOfLifeLimit)) catalog_.ask(poller);
}

OSStatus Registry::stop(AudioObjectID device, AudioDeviceIOProcID procId) {
  const RegistrationRef found = registration(device, procId);
  if (!found) return kAudioHardwareBadDeviceError;
  found->stop();
  publishChanges();
  return noErr;
}

OSStatus Registry::destroyProc(AudioObjectID device, AudioDeviceIOProcID procId) {
  const OSStatus status = stop(device, procId);
  if (status != noErr) return status;
  const std::lock_guard lock(mutex_);
  registrations_.erase(procId);
  return noErr;
}

Registry::RegistrationRef Registry::registration(AudioObjectID device, AudioDeviceIOProcID procId) const {
  const std::lock_guard lock(mutex_);
  const auto found = registrations_.find(procId);
  const bool own = found != registrations_.end() && found->second->device()->id() == device;
  return own ? found->second : nullptr;
}

std::vector<Registry::RegistrationRef> Registry::registrations() const {
  const std::lock_guard lock(mutex_);
  std::vector<RegistrationRef> all;
  all.reserve(registrations_.size());
  for (const auto& [id, registration] : registrations_) all.push_back(registration);
  return all;
}

void Registry::endAtExit() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  const auto deadline = Clock::now() + kExitLimit;
  const auto all = registrations();
  for (const RegistrationRef& registration : all) registration->abandon();
  for (const RegistrationRef& registration : all) registration->waitAbandoned(deadline);
}

}  // namespace tolvane::hal
