#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

namespace tolvane::hal {

/// One answer, handed from the thread that finds it to one that does not wait for ever. [not-io]
template <class T>
class LateAnswer {
 public:
  /// Gives the answer; false when nobody waits for it any more, and it is the giver's to clear away.
  bool give(T answer) {
    const std::lock_guard lock(mutex_);
    if (abandoned_) return false;
    answer_ = std::move(answer);
    given_.notify_one();
    return true;
  }

  /// Somebody waits for the answer, or may still come for it.
  bool isWanted() {
    const std::lock_guard lock(mutex_);
    return !abandoned_;
  }

  /// The answer, or none when it did not come in time: then it is never taken.
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
