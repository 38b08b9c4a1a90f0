#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>

namespace tolvane::ctl {

/// A FIFO queue of pointers from one thread to another; it does not own the items. put() never waits for
/// room: the queue has no limit. [not-io]
template <class T>
class BlockQueue {
 public:
  void put(T* item) {
    const std::lock_guard lock(mutex_);
    items_.push_back(item);
    changed_.notify_one();
  }

  /// Blocks until there is an item. Returns null if the queue is closed and empty.
  [[nodiscard]] T* take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return closed_ || !items_.empty(); });
    if (items_.empty()) return nullptr;
    T* const item = items_.front();
    items_.pop_front();
    return item;
  }

  /// No more items will come. Those in the queue can still be taken.
  void close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_all();
  }

  /// Closes the queue and drops its items.
  void abandon() {
    const std::lock_guard lock(mutex_);
    items_.clear();
    closed_ = true;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<T*> items_;
  bool closed_ = false;
};

}  // namespace tolvane::ctl
