#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ctl/process/wake_pipe.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl::control {

/// Writes files on a thread of its own, because a disk may take seconds. In order; each file whole or not at
/// all. Only one such object may write at a time, and no other atomic file may be written meanwhile.
/// [main-thread]
class FileWriter {
 public:
  struct Job {
    std::string path;
    std::string text;
    /// The texts one of which the file must still have; none: any. A file that does not exist has any.
    std::optional<std::vector<std::string>> expected;
    /// Called by finish(): the failure, after which the old file is still there; or none.
    std::function<void(const std::optional<Failure>&)> done;
  };

  FileWriter() = default;
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;
  /// Waits for the jobs, and calls no `done`.
  ~FileWriter();

  /// Failure, without a call of `done`: kMostJobs wait already, or no thread is left.
  [[nodiscard]] std::optional<Failure> start(Job job);

  /// For poll(): readable when finish() has something to do.
  [[nodiscard]] int descriptor() const noexcept { return wake_.descriptor(); }
  /// Calls `done` of the jobs that have ended.
  void finish();
  /// True until the last job's `done` has been called.
  [[nodiscard]] bool isBusy() const noexcept { return running_ > 0; }

 private:
  static constexpr std::size_t kMostJobs = 8;
  struct Ended {
    Job job;
    std::optional<Failure> failure;
  };
  void work();

  WakePipe wake_;
  std::size_t running_ = 0;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Job> jobs_;
  std::deque<Ended> ended_;
  bool isEnding_ = false;
  std::thread thread_;
};

}  // namespace tolvane::ctl::control
