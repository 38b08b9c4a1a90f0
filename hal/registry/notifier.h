#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "hal/surface/audio_hardware.h"

namespace tolvane::hal {

/// The property listeners, and the thread that calls them. The notifier lives as long as the process.
class Notifier {
 public:
  /// Like AudioObjectAddPropertyListener and AudioObjectRemovePropertyListener, without their checks. add()
  /// returns false and adds nothing if the notification thread cannot be created. [not-io]
  [[nodiscard]] bool add(AudioObjectID object, const AudioObjectPropertyAddress& address,
                         AudioObjectPropertyListenerProc listener, void* clientData);
  void remove(AudioObjectID object, const AudioObjectPropertyAddress& address,
              AudioObjectPropertyListenerProc listener, void* clientData);

  /// Queues a call of every listener that the property has now. Each post gives one call, in the order of the
  /// posts. [not-io]
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
  std::deque<ListenerRef> due_;  // listeners to call, in order
  ListenerRef called_;           // the listener that is running
  std::thread::id thread_;
  bool working_ = false;
};

}  // namespace tolvane::hal
