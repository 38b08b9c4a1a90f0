#include "hal/pipewire/loop_thread.h"

#include <condition_variable>
#include <utility>

namespace tolvane::hal::pipewire {

namespace {

/// What a caller of call() waits for. Shared, because the task may outlast the wait.
struct Completion {
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
};

}  // namespace

std::unique_ptr<LoopThread> LoopThread::create(const Library& library) {
  std::unique_ptr<LoopThread> made(new LoopThread(library));
  if (!made->open()) return nullptr;
  return made;
}

bool LoopThread::open() {
  thread_ = library_.pw_thread_loop_new("tolvane-pw", nullptr);
  if (thread_ == nullptr) return false;
  loop_ = library_.pw_thread_loop_get_loop(thread_);
  wakeUp_ = addEvent(
      loop_, [](void* data, std::uint64_t /*count*/) { static_cast<LoopThread*>(data)->runTasks(); }, this);
  return wakeUp_ != nullptr;
}

bool LoopThread::start() {
  return library_.pw_thread_loop_start(thread_) == 0;
}

LoopThread::~LoopThread() {
  stop();
  if (wakeUp_ != nullptr) destroySource(loop_, wakeUp_);
  if (thread_ != nullptr) library_.pw_thread_loop_destroy(thread_);
}

void LoopThread::stop() {
  if (thread_ != nullptr) library_.pw_thread_loop_stop(thread_);
  const std::lock_guard lock(mutex_);
  tasks_.clear();
}

void LoopThread::post(Task task) {
  {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  signalEvent(loop_, wakeUp_);
}

bool LoopThread::call(Task task, std::chrono::milliseconds timeout) {
  const auto completion = std::make_shared<Completion>();
  post([completion, task = std::move(task)] {
    task();
    const std::lock_guard lock(completion->mutex);
    completion->done = true;
    completion->changed.notify_all();
  });
  std::unique_lock lock(completion->mutex);
  return completion->changed.wait_for(lock, timeout, [&] { return completion->done; });
}

void LoopThread::runTasks() {
  std::deque<Task> tasks;
  {
    const std::lock_guard lock(mutex_);
    tasks.swap(tasks_);
  }
  for (Task& task : tasks) task();
}

LoopTimer::LoopTimer(LoopThread& thread, Task handler) : loop_(thread.loop()), handler_(std::move(handler)) {
  source_ = addTimer(
      loop_, [](void* data, std::uint64_t /*expirations*/) { static_cast<LoopTimer*>(data)->handler_(); },
      this);
}

LoopTimer::~LoopTimer() {
  if (source_ != nullptr) destroySource(loop_, source_);
}

void LoopTimer::every(std::chrono::milliseconds period) {
  if (source_ == nullptr || period == period_) return;
  period_ = period;
  timespec interval{};
  interval.tv_sec = static_cast<std::time_t>(period.count() / 1000);
  interval.tv_nsec = static_cast<long>(period.count() % 1000) * 1'000'000L;
  updateTimer(loop_, source_, &interval, &interval);
}

}  // namespace tolvane::hal::pipewire
