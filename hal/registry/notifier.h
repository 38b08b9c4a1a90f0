#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "hal/surface/audio_hardware.h"

namespace tolvane::hal {

/// The property listeners, and the thread that calls them. It lives as long as the process.
class Notifier {
 public:
  /// As AudioObjectAddPropertyListener and AudioObjectRemovePropertyListener, without their checks. False,
  /// and nothing is added, when there is no thread to call it on. [not-io]
  [[nodiscard]] bool add(AudioObjectID object, const AudioObjectPropertyAddress& address,
                         AudioObjectPropertyListenerProc listener, void* clientData);
  void remove(AudioObjectID object, const AudioObjectPropertyAddress& address,
              AudioObjectPropertyListenerProc listener, void* clientData);

  /// Has the listeners that the property has now called, once for each post, in the order of the posts.
  /// [not-io]
  void post(AudioObjectID object, const AudioObjectPropertyAddress& address);

 private:
  struct Listener {
    AudioObjectID object;
    AudioObjectPropertyAddress address;
    AudioObjectPropertyListenerProc proc;
    void* clientData;
    bool removed = false;
  };
  using ListenerRef = std::shared_ptr<Listener>;

  [[nodiscard]] std::vector<ListenerRef> listenersOf(AudioObjectID object,
                                                     const AudioObjectPropertyAddress& address) const;
  void work();
  void call(const ListenerRef& listener, std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;  // never held while a listener is called
  std::condition_variable posted_;
  std::condition_variable returned_;
  std::vector<ListenerRef> listeners_;
  std::deque<ListenerRef> due_;  // whom to call, in order
  ListenerRef called_;           // the one that is running
  std::thread::id thread_;
  bool working_ = false;
};

}  // namespace tolvane::hal
