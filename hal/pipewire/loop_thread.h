// The one thread that talks to the sound server. Only this thread waits for the server. All others post tasks
// to it and choose how long they wait.
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
  /// Makes the loop but does not start its thread. Null if the system has no descriptor left. [not-io]
  static std::unique_ptr<LoopThread> create(const Library& library);

  /// Starts the thread; false if the system has none left. [not-io]
  bool start();

  /// Ends the thread. The thread first finishes the tasks that it has already taken from the queue; the tasks
  /// still in the queue are dropped. [not-io]
  ~LoopThread();
  LoopThread(const LoopThread&) = delete;
  LoopThread& operator=(const LoopThread&) = delete;

  /// Queues the task. The thread runs tasks in the order of their posting. [not-io]
  void post(Task task);

  /// Posts the task and waits until it has run. Returns false if it has not run within `timeout`. It may then
  /// still run later, so it must own everything it uses. Must not be called on the thread itself. [not-io]
  bool call(Task task, std::chrono::milliseconds timeout);

  /// Ends the thread as the destructor does, but keeps the loop, so that objects made on it can be destroyed.
  /// [not-io]
  void stop();

  /// The loop, for making objects on it. [any-thread]
  [[nodiscard]] pw_loop* loop() const noexcept { return loop_; }

 private:
  explicit LoopThread(const Library& library) : library_(library) {}
  bool open();
  void runTasks();

  const Library& library_;
  pw_thread_loop* thread_ = nullptr;
  pw_loop* loop_ = nullptr;
  spa_source* wakeUp_ = nullptr;
  std::mutex mutex_;  // guards tasks_; never held during a wait
  std::deque<Task> tasks_;
};

/// Calls a handler periodically on the thread while switched on. Created, used and destroyed on the thread,
/// or while the thread is not running.
class LoopTimer {
 public:
  LoopTimer(LoopThread& thread, Task handler);
  ~LoopTimer();
  LoopTimer(const LoopTimer&) = delete;
  LoopTimer& operator=(const LoopTimer&) = delete;

  /// Sets the period of the calls; 0 switches the timer off.
  void every(std::chrono::milliseconds period);

 private:
  pw_loop* loop_;
  Task handler_;
  spa_source* source_;
  std::chrono::milliseconds period_{0};
};

}  // namespace tolvane::hal::pipewire
