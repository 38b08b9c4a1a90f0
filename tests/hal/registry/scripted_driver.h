// A driver that a test controls: its devices, its sessions, and where it hangs.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "hal/driver/driver.h"

namespace tolvane::test {

/// A gate that can hold threads.
class Latch {
 public:
  /// From now on, holds every thread that calls pass().
  void close();
  /// Releases all threads, and holds none from now on.
  void open();
  void pass();
  /// The number of threads that the closed latch has held so far.
  [[nodiscard]] int held() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable opened_;
  bool closed_ = false;
  int held_ = 0;
};

/// The test's side of a scripted driver. Any thread may call its functions.
class Script {
 public:
  /// Makes a driver that follows this script. The script must outlive the process's use of the driver.
  std::unique_ptr<hal::Driver> makeDriver();

  void setDevices(std::vector<hal::DeviceInfo> devices);
  /// Tells the HAL that the list has changed.
  void notify();
  void setNotifies(bool notifies);
  /// Must be called before the HAL uses the driver.
  void setServer(const std::string& server);
  /// If true, the server has accepted the connection but does not respond, so devices() gives no answer.
  void setSilent(bool silent);
  /// If true, devices() throws, as in a system without free descriptors.
  void setExhausted(bool exhausted);
  /// How long devices() takes from now on.
  void setListingTime(std::chrono::milliseconds time);
  void setStartStatus(OSStatus status);
  void setSettingStatus(OSStatus status);

  Latch listing;   // passed by devices()
  Latch starting;  // passed by start()
  Latch ending;    // passed by the session's destructor
  Latch setting;   // passed by each change of a setting, and by a claim

  [[nodiscard]] int listings() const;
  [[nodiscard]] int starts() const;
  [[nodiscard]] int liveSessions() const;
  [[nodiscard]] std::vector<hal::DeviceInfo> startedWith() const;

  /// Events of the newest session. The calling thread acts as the device's. Each returns false if there is no
  /// session.
  bool cycle(std::uint32_t frames);
  bool overload();
  bool setAlive(bool alive);
  bool setFormat(double sampleRateHz, std::uint32_t bufferFrames);
  bool removeLinks(const hal::RemovedLinks& removed);
  /// Runs a cycle for the client of the `index`th start, even if its session should be gone, as a hung driver
  /// may.
  void cycleOf(std::size_t index, std::uint32_t frames) { firstOutputAfterCycleOf(index, frames); }
  /// Does the same and returns the first output sample, which was -1 before the cycle.
  float firstOutputAfterCycleOf(std::size_t index, std::uint32_t frames);

 private:
  friend class ScriptedDriver;
  friend class ScriptedSession;

  mutable std::mutex mutex_;
  std::vector<hal::DeviceInfo> devices_;
  hal::Driver* driver_ = nullptr;
  hal::DeviceObserver* observer_ = nullptr;
  bool notifies_ = true;
  std::string server_;
  bool silent_ = false;
  bool exhausted_ = false;
  std::chrono::milliseconds listingTime_{0};
  OSStatus startStatus_ = noErr;
  OSStatus settingStatus_ = noErr;
  int listings_ = 0;
  int liveSessions_ = 0;
  std::vector<hal::DeviceInfo> startedWith_;
  std::vector<hal::SessionClient*> clients_;
};

/// A device of this many one-channel streams.
hal::DeviceInfo scriptedDevice(const std::string& uid, std::size_t inputs, std::size_t outputs);

}  // namespace tolvane::test
