#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <sys/stat.h>

namespace tolvane::ctl {

/// Notices that a file has changed: written in place, replaced by another, removed, put back, or reached
/// through another link. It may notice more than there is; the reader compares. [main-thread]
class FileWatcher {
 public:
  virtual ~FileWatcher() = default;

  /// Readable when there may be a change; -1 where there is no such descriptor. To be polled.
  [[nodiscard]] virtual int descriptor() const noexcept = 0;

  /// Ask changed() at least this often, also when the descriptor stays quiet.
  [[nodiscard]] virtual std::chrono::milliseconds askEvery() const noexcept = 0;

  /// Whether there was a change since the last call, or since construction. Does not wait.
  [[nodiscard]] virtual bool changed() = 0;
};

/// The best watcher that the system has: told by the system where it can tell, else one that looks. [not-io]
[[nodiscard]] std::unique_ptr<FileWatcher> watchFile(const std::string& path);

/// Looks at what the file system says of the file. Works everywhere, also on network folders.
class PollingWatcher : public FileWatcher {
 public:
  PollingWatcher(std::string path, std::chrono::milliseconds interval);

  [[nodiscard]] int descriptor() const noexcept override { return -1; }
  [[nodiscard]] std::chrono::milliseconds askEvery() const noexcept override { return interval_; }
  [[nodiscard]] bool changed() override;

 private:
  /// What tells one content from the next. All zero when there is no file.
  struct Stamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    bool operator==(const Stamp&) const = default;
  };
  [[nodiscard]] Stamp stampNow() const;

  std::string path_;
  std::chrono::milliseconds interval_;
  Stamp lastStamp_;
};

}  // namespace tolvane::ctl
