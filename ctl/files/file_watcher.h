#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <sys/stat.h>

namespace tolvane::ctl {

/// Notices that a file was written, replaced, removed or restored, or that a symbolic link to it changed. It
/// may report a change that was none: the caller compares the content. [main-thread]
class FileWatcher {
 public:
  virtual ~FileWatcher() = default;

  /// For poll(): readable when the file may have changed. -1 if there is no such descriptor.
  [[nodiscard]] virtual int descriptor() const noexcept = 0;

  /// Call changed() at least this often, even if the descriptor is not readable.
  [[nodiscard]] virtual std::chrono::milliseconds askEvery() const noexcept = 0;

  /// True if the file changed since the last call, or since construction. Does not block.
  [[nodiscard]] virtual bool changed() = 0;
};

/// Watches with the system's change notifications if it has any, else by polling. [not-io]
[[nodiscard]] std::unique_ptr<FileWatcher> watchFile(const std::string& path);

/// Compares the file's identity, size and modification time. Works on every file system, also on network
/// folders.
class PollingWatcher : public FileWatcher {
 public:
  PollingWatcher(std::string path, std::chrono::milliseconds interval);

  [[nodiscard]] int descriptor() const noexcept override { return -1; }
  [[nodiscard]] std::chrono::milliseconds askEvery() const noexcept override { return interval_; }
  [[nodiscard]] bool changed() override;

 private:
  /// Changes with the file's content. All zero if there is no file.
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
