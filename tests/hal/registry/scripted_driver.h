// A driver that does what a test says: its devices, its sessions, and where it hangs.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "hal/driver/driver.h"

namespace tolvane::test {

/// A place where threads can be held.
class Latch {
 public:
  /// Holds whoever passes from now on.
  void close();
  /// Lets everybody go.
  void open();
  void pass();
  /// Threads that have come to the closed latch since it was made.
  [[nodiscard]] int held() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable opened_;
  bool closed_ = false;
  int held_ = 0;
};

/// The test's end of a scripted driver. Everything is for any thread.
class Script {
 public:
  /// A new driver that follows this script, which outlives the process's use of it.
  std::unique_ptr<hal::Driver> makeDriver();

  void setDevices(std::vector<hal::DeviceInfo> devices);
  /// Tells the HAL that the list has changed.
  void notify();
  void setNotifies(bool notifies);
  /// Before the HAL uses the driver.
  void setServer(const std::string& server);
  /// Its server has taken the connection and says nothing: no devices() is an answer.
  void setSilent(bool silent);
  /// devices() throws what a system without descriptors makes it throw.
  void setExhausted(bool exhausted);
  void setStartStatus(OSStatus status);
  void setBufferFramesStatus(OSStatus status);

  Latch listing;   // passed by devices()
  Latch starting;  // passed by start()
  Latch ending;    // passed by the session's destructor
  Latch setting;   // passed by setBufferFrames()

  [[nodiscard]] int listings() const;
  [[nodiscard]] int starts() const;
  [[nodiscard]] int liveSessions() const;
  [[nodiscard]] std::vector<hal::DeviceInfo> startedWith() const;

  /// What the newest session does on its device's thread. Each returns false when there is no session.
  bool cycle(std::uint32_t frames);
  bool overload();
  bool setAlive(bool alive);
  bool setFormat(double sampleRateHz, std::uint32_t bufferFrames);
  /// A cycle by a session that should be gone, as a driver that hangs may still give it: the client of the
  /// `index`th start.
  void cycleOf(std::size_t index, std::uint32_t frames) { firstOutputAfterCycleOf(index, frames); }
  /// The first output sample that is left of it; it was -1 before.
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
  OSStatus startStatus_ = noErr;
  OSStatus bufferFramesStatus_ = noErr;
  int listings_ = 0;
  int liveSessions_ = 0;
  std::vector<hal::DeviceInfo> startedWith_;
  std::vector<hal::SessionClient*> clients_;
};

/// A device of this many one-channel streams.
hal::DeviceInfo scriptedDevice(const std::string& uid, std::size_t inputs, std::size_t outputs);

}  // namespace tolvane::test
