// The one thread that talks to the sound server. Whatever waits for the server happens there; everybody else
// hands it tasks and waits as long as they choose.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "hal/pipewire/library.h"

namespace tolvane::hal::pipewire {

using Task = std::function<void()>;

class LoopThread {
 public:
  /// The loop, its thread not yet running; null when the machine has no descriptor left for it. [not-io]
  static std::unique_ptr<LoopThread> create(const Library& library);

  /// Starts the thread; false when the machine has none left. [not-io]
  bool start();

  /// Ends the thread after the task it is in; tasks that it had not begun are dropped. [not-io]
  ~LoopThread();
  LoopThread(const LoopThread&) = delete;
  LoopThread& operator=(const LoopThread&) = delete;

  /// Runs the task on the thread, after those handed over before. [not-io]
  void post(Task task);

  /// Posts, and waits until the task has run: false when it has not within `timeout`. It may then still run
  /// later, so it must own whatever it uses. Not on the thread itself. [not-io]
  bool call(Task task, std::chrono::milliseconds timeout);

  /// Ends the thread as the destructor does, but keeps the loop, so that what was made on it can be
  /// destroyed. [not-io]
  void stop();

  /// The loop, for what is made on the thread. [any-thread]
  [[nodiscard]] pw_loop* loop() const noexcept { return loop_; }

 private:
  explicit LoopThread(const Library& library) : library_(library) {}
  bool open();
  void runTasks();

  const Library& library_;
  pw_thread_loop* thread_ = nullptr;
  pw_loop* loop_ = nullptr;
  spa_source* wakeUp_ = nullptr;
  std::mutex mutex_;  // guards tasks_; never held while anything is waited for
  std::deque<Task> tasks_;
};

/// Calls a handler on the thread at regular times while it is switched on. Made, used and destroyed on the
/// thread, or while that is not running.
class LoopTimer {
 public:
  LoopTimer(LoopThread& thread, Task handler);
  ~LoopTimer();
  LoopTimer(const LoopTimer&) = delete;
  LoopTimer& operator=(const LoopTimer&) = delete;

  /// Calls the handler at this period from now on; zero: not at all.
  void every(std::chrono::milliseconds period);

 private:
  pw_loop* loop_;
  Task handler_;
  spa_source* source_;
  std::chrono::milliseconds period_{0};
};

}  // namespace tolvane::hal::pipewire
