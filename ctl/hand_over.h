#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>

namespace tolvane::ctl {

/// Hands pointers from one thread to another, first in, first out. Putting never waits: it holds as many as
/// are in circulation. [not-io]
template <class T>
class HandOver {
 public:
  void put(T* item) {
    const std::lock_guard lock(mutex_);
    items_.push_back(item);
    changed_.notify_one();
  }

  /// The next item, when it has come; null once it is closed and empty.
  [[nodiscard]] T* take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return closed_ || !items_.empty(); });
    if (items_.empty()) return nullptr;
    T* const item = items_.front();
    items_.pop_front();
    return item;
  }

  /// No more will come; what is there can still be taken.
  void close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_all();
  }

  /// Closes, and takes back what is there.
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
