// watchFile on Linux: the kernel tells of changes in the file's folder, so that a file which an editor puts
// in the place of the old one is noticed too.
#include <algorithm>
#include <filesystem>
#include <vector>

#include <sys/inotify.h>
#include <unistd.h>

#include "ctl/file_watcher.h"

namespace tolvane::ctl {

namespace {

using std::chrono::milliseconds;

class InotifyWatcher : public FileWatcher {
 public:
  explicit InotifyWatcher(std::string path)
      : path_(std::move(path)),
        // Network folders, and a folder that was itself replaced, are silent: look too, now and then.
        looking_(path_, milliseconds(1000)),
        descriptor_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    watchFolders();
  }
  InotifyWatcher(const InotifyWatcher&) = delete;
  InotifyWatcher& operator=(const InotifyWatcher&) = delete;
  ~InotifyWatcher() override {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  [[nodiscard]] int descriptor() const noexcept override { return descriptor_; }
  [[nodiscard]] milliseconds askEvery() const noexcept override { return looking_.askEvery(); }

  [[nodiscard]] bool changed() override {
    const bool told = drain();
    const bool seen = looking_.changed();
    if (!told && !seen) return false;
    watchFolders();  // the name may lead elsewhere now
    return true;
  }

 private:
  /// The folder of the name, and the folder of what it leads to. Watching one twice is watching it once.
  void watchFolders() {
    std::error_code error;
    const std::filesystem::path named(path_);
    const std::filesystem::path real = std::filesystem::canonical(named, error);
    watchFolderOf(named);
    if (!error) watchFolderOf(real);
    names_ = {named.filename().string(), real.filename().string()};
  }

  void watchFolderOf(const std::filesystem::path& file) const {
    const std::filesystem::path folder = file.parent_path().empty() ? "." : file.parent_path();
    constexpr std::uint32_t kChanges = IN_MODIFY | IN_CLOSE_WRITE | IN_CREATE | IN_MOVED_TO | IN_ONLYDIR;
    if (descriptor_ >= 0) ::inotify_add_watch(descriptor_, folder.c_str(), kChanges);
  }

  /// Whether anything was told that is about the file, or that says that something was missed.
  [[nodiscard]] bool drain() const {
    alignas(inotify_event) char events[4096];
    bool about = false;
    ssize_t count = 0;
    while (descriptor_ >= 0 && (count = ::read(descriptor_, events, sizeof events)) > 0) {
      for (ssize_t at = 0; at < count;) {
        const auto* event = reinterpret_cast<const inotify_event*>(events + at);
        about = about || isAboutFile(*event);
        at += static_cast<ssize_t>(sizeof *event + event->len);
      }
    }
    return about;
  }

  [[nodiscard]] bool isAboutFile(const inotify_event& event) const {
    return event.len == 0 || std::find(names_.begin(), names_.end(), event.name) != names_.end();
  }

  std::string path_;
  std::vector<std::string> names_;  // of the file, in either folder
  PollingWatcher looking_;
  int descriptor_;
};

}  // namespace

std::unique_ptr<FileWatcher> watchFile(const std::string& path) {
  auto watcher = std::make_unique<InotifyWatcher>(path);
  if (watcher->descriptor() >= 0) return watcher;
  return std::make_unique<PollingWatcher>(path, milliseconds(200));
}

}  // namespace tolvane::ctl
