#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "hal/registry/catalog.h"
#include "hal/registry/notifier.h"
#include "hal/registry/registration.h"

namespace tolvane::hal {

/// What stands behind the C surface: the devices, the registrations and the listeners of the process, and the
/// thread that carries what sessions say to the listeners and starts lost devices again. Made on first use
/// with the driver table's drivers, never destroyed.
class Registry {
 public:
  static Registry& shared();

  /// Lists the devices of these drivers instead, from now on. A device keeps its identifier by its uid.
  /// Nothing may be started. For programs that bring a driver of their own, as tests do. [not-io]
  void useDrivers(std::vector<std::unique_ptr<Driver>> drivers);

  /// Every driver is asked; those that do not answer in time are left out. Throws as Catalog::askAll() does.
  /// [not-io]
  DeviceListing listDevices();
  /// Null when there is none. [not-io]
  std::shared_ptr<Device> device(AudioObjectID id) { return catalog_.device(id); }
  /// 'livn': by its running sessions, else by the list. [not-io]
  [[nodiscard]] bool alive(const Device& device) const;
  /// The thread that runs a callback on the device, by its kernel id; 0 while none does. [not-io]
  [[nodiscard]] pid_t ioThread(const Device& device) const;
  /// As setting 'fsiz', within the device's range. [not-io]
  OSStatus setBufferFrames(const std::shared_ptr<Device>& device, std::uint32_t frames);

  [[nodiscard]] Notifier& notifier() noexcept { return notifier_; }

  /// As the C surface's functions, without the checks of their arguments. [not-io]
  AudioDeviceIOProcID createProc(std::shared_ptr<Device> device, AudioDeviceIOProc proc, void* clientData);
  OSStatus start(AudioObjectID device, AudioDeviceIOProcID procId);
  OSStatus stop(AudioObjectID device, AudioDeviceIOProcID procId);
  OSStatus destroyProc(AudioObjectID device, AudioDeviceIOProcID procId);

 private:
  using RegistrationRef = std::shared_ptr<Registration>;

  Registry();
  [[nodiscard]] RegistrationRef registration(AudioObjectID device, AudioDeviceIOProcID procId) const;
  [[nodiscard]] std::vector<RegistrationRef> registrations() const;
  void endAtExit();
  bool beSupervised();
  void wake();
  void supervise();
  bool superviseOnce(Clock::time_point now);
  void askAfterLost(const std::vector<RegistrationRef>& registrations, Clock::time_point now);
  void publishChanges();

  Notifier notifier_;
  Catalog catalog_;

  mutable std::mutex mutex_;  // of the registrations
  std::map<AudioDeviceIOProcID, RegistrationRef> registrations_;
  std::uintptr_t lastProcId_ = 0;
  bool ending_ = false;

  std::mutex publishing_;  // so that values are posted in the order in which they were

  std::mutex wakeMutex_;
  std::condition_variable woken_;
  bool wake_ = false;
  bool supervised_ = false;  // the thread has been made
  std::once_flag exitHandled_;
  Clock::time_point lastAskedAfterLost_;  // the supervising thread's own
};

}  // namespace tolvane::hal
