#include "hal/registry/notifier.h"

#include <algorithm>

#include "hal/support/thread.h"

namespace tolvane::hal {

namespace {

bool same(const AudioObjectPropertyAddress& a, const AudioObjectPropertyAddress& b) noexcept {
  return a.mSelector == b.mSelector && a.mScope == b.mScope && a.mElement == b.mElement;
}

}  // namespace

bool Notifier::add(AudioObjectID object, const AudioObjectPropertyAddress& address,
                   AudioObjectPropertyListenerProc listener, void* clientData) {
  const std::lock_guard lock(mutex_);
  if (!working_) working_ = runDetached("tolvane-notify", [this] { work(); });
  if (!working_) return false;
  const bool there = std::any_of(listeners_.begin(), listeners_.end(), [&](const ListenerRef& l) {
    return l->object == object && same(l->address, address) && l->proc == listener &&
           l->clientData == clientData;
  });
  if (there) return true;
  listeners_.push_back(std::make_shared<Listener>(Listener{object, address, listener, clientData}));
  return true;
}

void Notifier::remove(AudioObjectID object, const AudioObjectPropertyAddress& address,
                      AudioObjectPropertyListenerProc listener, void* clientData) {
  std::unique_lock lock(mutex_);
  const auto found = std::find_if(listeners_.begin(), listeners_.end(), [&](const ListenerRef& l) {
    return l->object == object && same(l->address, address) && l->proc == listener &&
           l->clientData == clientData;
  });
  if (found == listeners_.end()) return;
  const ListenerRef removed = *found;
  removed->removed = true;
  listeners_.erase(found);
  if (std::this_thread::get_id() == thread_) return;
  returned_.wait(lock, [&] { return called_ != removed; });
}

void Notifier::post(AudioObjectID object, const AudioObjectPropertyAddress& address) {
  const std::lock_guard lock(mutex_);
  const auto listeners = listenersOf(object, address);
  due_.insert(due_.end(), listeners.begin(), listeners.end());
  posted_.notify_one();
}

std::vector<Notifier::ListenerRef> Notifier::listenersOf(AudioObjectID object,
                                                         const AudioObjectPropertyAddress& address) const {
  std::vector<ListenerRef> found;
  std::copy_if(listeners_.begin(), listeners_.end(), std::back_inserter(found),
               [&](const ListenerRef& l) { return l->object == object && same(l->address, address); });
  return found;
}

void Notifier::work() {
  std::unique_lock lock(mutex_);
  thread_ = std::this_thread::get_id();
  for (;;) {
    posted_.wait(lock, [this] { return !due_.empty(); });
    const ListenerRef listener = due_.front();
    due_.pop_front();
    if (!listener->removed) call(listener, lock);
  }
}

void Notifier::call(const ListenerRef& listener, std::unique_lock<std::mutex>& lock) {
  called_ = listener;
  lock.unlock();
  listener->proc(listener->object, 1, &listener->address, listener->clientData);
  lock.lock();
  called_ = nullptr;
  returned_.notify_all();
}

}  // namespace tolvane::hal
