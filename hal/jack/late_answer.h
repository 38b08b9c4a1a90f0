#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

namespace tolvane::hal {

/// One answer, passed from the thread that finds it to a thread that waits for a limited time. [not-io]
template <class T>
class LateAnswer {
 public:
  /// Gives the answer. Returns false if nobody waits for it any more; the giver must then clean up.
  bool give(T answer) {
    const std::lock_guard lock(mutex_);
    if (abandoned_) return false;
    answer_ = std::move(answer);
    given_.notify_one();
    return true;
  }

  /// True unless the taker has given up.
  bool isWanted() {
    const std::lock_guard lock(mutex_);
    return !abandoned_;
  }

  /// Waits for the answer; none if it does not come within `timeout`. After that, give() returns false.
  std::optional<T> take(std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    if (!given_.wait_for(lock, timeout, [this] { return answer_.has_value(); })) abandoned_ = true;
    return std::move(answer_);
  }

 private:
  std::mutex mutex_;
  std::condition_variable given_;
  std::optional<T> answer_;
  bool abandoned_ = false;
};

}  // namespace tolvane::hal
