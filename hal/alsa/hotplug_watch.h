#pragma once

#include <functional>
#include <string>
#include <thread>

#include "base/inotify.h"

namespace tolvane::hal::alsa {

/// Tells when sound cards come, go or become accessible to this user, by watching their device files.
class HotplugWatch {
 public:
  /// Calls `onChange` on the watch's own thread, a short time after a change, when all of the card's files
  /// exist. Also calls it twice a second while `isWaiting` returns true. If the system cannot watch files,
  /// only the second kind of call happens. `devices` is the folder of the system's device files. [not-io]
  HotplugWatch(std::function<void()> onChange, std::function<bool()> isWaiting, std::string devices = "/dev");
  HotplugWatch(const HotplugWatch&) = delete;
  HotplugWatch& operator=(const HotplugWatch&) = delete;
  ~HotplugWatch();

 private:
  void run();
  bool takeEvents() const;
  void watchFolders() const;

  const std::function<void()> onChange_;
  const std::function<bool()> isWaiting_;
  const std::string devices_;
  Inotify inotify_;
  int stopFd_;
  std::thread thread_;
};

}  // namespace tolvane::hal::alsa
