#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "hal/registry/catalog.h"
#include "hal/registry/notifier.h"
#include "hal/registry/registration.h"

namespace tolvane::hal {

/// Implements the C surface: the devices, registrations and listeners of the process, and the thread that
/// passes session events to the listeners and restarts lost devices. Made on first use, never
/// destroyed. The drivers are those of the driver table, made for the first list.
class Registry {
 public:
  static Registry& shared();

  /// Replaces the drivers, for programs with a driver of their own, such as tests. A device keeps its
  /// identifier by its uid. No callback may be started during the call. [not-io]
  void useDrivers(std::vector<std::unique_ptr<Driver>> drivers);

  /// Asks every driver; leaves out those that do not answer in time. Throws like Catalog::askAll(). [not-io]
  DeviceListing listDevices();
  /// Asks every driver and does not wait for the answers. False if the system has no thread left. [not-io]
  bool prefetch();
  [[nodiscard]] std::vector<std::string> problems() { return catalog().problems(); }
  /// Null when there is none. [not-io]
  std::shared_ptr<Device> device(AudioObjectID id) { return catalog_.device(id); }
  /// The value of 'livn': from the device's running sessions, else from the list. [not-io]
  [[nodiscard]] bool alive(const Device& device) const;
  /// Kernel id of the thread that runs a callback on the device; 0 if there is none. [not-io]
  [[nodiscard]] pid_t ioThread(const Device& device) const;
  /// Whether the memory of the device's session is locked; none if no session has said so. [not-io]
  [[nodiscard]] std::optional<bool> isMemoryLocked(const Device& device) const;
  /// Makes the driver change a setting of the device, on a thread of its own: calls `change` with the driver
  /// and the device's last report. [not-io]
  using Change = std::function<OSStatus(Driver& driver, const DeviceInfo& device)>;
  OSStatus change(const std::shared_ptr<Device>& device, Change change);
  /// The uid of the device's one sound card; empty unless a sound server holds the card. [not-io]
  [[nodiscard]] std::string cardUid(const Device& device) const;
  /// The work of kTolvanePropertyClaim. [not-io]
  OSStatus claim(const std::string& uid);

  [[nodiscard]] Notifier& notifier() noexcept { return notifier_; }

  /// Like the functions of the C surface, without the checks of their arguments. [not-io]
  AudioDeviceIOProcID createProc(std::shared_ptr<Device> device, AudioDeviceIOProc proc, void* clientData);
  OSStatus start(AudioObjectID device, AudioDeviceIOProcID procId);
  OSStatus stop(AudioObjectID device, AudioDeviceIOProcID procId);
  OSStatus destroyProc(AudioObjectID device, AudioDeviceIOProcID procId);

 private:
  using RegistrationRef = std::shared_ptr<Registration>;

  Registry();
  [[nodiscard]] Catalog& catalog();
  [[nodiscard]] RegistrationRef registration(AudioObjectID device, AudioDeviceIOProcID procId) const;
  [[nodiscard]] std::vector<RegistrationRef> registrations() const;
  void endAtExit();
  bool beSupervised();
  void awaitLateAnswer(const Device& device);
  OSStatus call(const std::shared_ptr<DriverPoller>& poller, std::function<OSStatus(Driver&)> called,
                std::chrono::milliseconds limit);
  void wake();
  void supervise();
  bool superviseOnce(Clock::time_point now);
  void askAfterLost(const std::vector<RegistrationRef>& registrations, Clock::time_point now);
  void publishChanges();

  Notifier notifier_;
  Catalog catalog_;
  std::once_flag driversMade_;

  mutable std::mutex mutex_;  // guards the members up to ending_
  std::map<AudioDeviceIOProcID, RegistrationRef> registrations_;
  std::uintptr_t lastProcId_ = 0;
  bool ending_ = false;

  std::mutex publishing_;  // keeps posts in the order of the changes

  std::mutex wakeMutex_;
  std::condition_variable woken_;
  bool wake_ = false;
  bool supervised_ = false;  // the thread exists
  std::once_flag exitHandled_;
  Clock::time_point lastAskedAfterLost_;  // used by the supervising thread only
};

}  // namespace tolvane::hal
