#pragma once

#include <functional>
#include <thread>

namespace tolvane::hal::alsa {

/// Tells when sound cards come, go or become accessible to this user: their device files do.
class HotplugWatch {
 public:
  /// `onChange` is called on a thread of the watch's own, some time after the change, when the card's files
  /// are all there; and twice a second as long as `isWaiting` says so. Without the system's means of watching
  /// only the latter holds. [not-io]
  HotplugWatch(std::function<void()> onChange, std::function<bool()> isWaiting);
  HotplugWatch(const HotplugWatch&) = delete;
  HotplugWatch& operator=(const HotplugWatch&) = delete;
  ~HotplugWatch();

 private:
  void run();
  bool takeEvents() const;
  void watchFolders() const;

  const std::function<void()> onChange_;
  const std::function<bool()> isWaiting_;
  int notifyFd_;
  int stopFd_;
  std::thread thread_;
};

}  // namespace tolvane::hal::alsa
