// watchFile on Linux, with inotify. It watches the file's folder, so it also notices when an editor replaces
// the file.
#include <algorithm>
#include <filesystem>
#include <vector>

#include <sys/inotify.h>

#include "base/inotify.h"
#include "ctl/files/file_watcher.h"

namespace tolvane::ctl {

namespace {

using std::chrono::milliseconds;

class InotifyWatcher : public FileWatcher {
 public:
  explicit InotifyWatcher(std::string path)
      : path_(std::move(path)),
        // Network folders, and folders that were themselves replaced, send no events: poll as well.
        looking_(path_, milliseconds(1000)) {
    watchFolders();
  }

  [[nodiscard]] int descriptor() const noexcept override { return inotify_.descriptor(); }
  [[nodiscard]] milliseconds askEvery() const noexcept override { return looking_.askEvery(); }

  [[nodiscard]] bool changed() override {
    const bool told = drain();
    const bool seen = looking_.changed();
    if (!told && !seen) return false;
    watchFolders();  // a symbolic link may lead elsewhere now
    return true;
  }

 private:
  /// Watches the folder of the name and the folder of the file that its links lead to. Adding a watch twice
  /// has no effect.
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
    inotify_.add(folder.c_str(), kChanges);
  }

  /// Takes all events. True if any is about the file, or says that events were lost.
  [[nodiscard]] bool drain() const {
    bool about = false;
    inotify_.drain([&](const Inotify::Event& event) {
      about =
          about || event.name.empty() || std::find(names_.begin(), names_.end(), event.name) != names_.end();
    });
    return about;
  }

  std::string path_;
  std::vector<std::string> names_;  // the file's names in the two folders
  PollingWatcher looking_;
  Inotify inotify_;
};

}  // namespace

std::unique_ptr<FileWatcher> watchFile(const std::string& path) {
  auto watcher = std::make_unique<InotifyWatcher>(path);
  if (watcher->descriptor() >= 0) return watcher;
  return std::make_unique<PollingWatcher>(path, milliseconds(200));
}

}  // namespace tolvane::ctl
