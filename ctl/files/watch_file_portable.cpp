// watchFile on a system without change notifications.
#include "ctl/files/file_watcher.h"

namespace tolvane::ctl {

std::unique_ptr<FileWatcher> watchFile(const std::string& path) {
  return std::make_unique<PollingWatcher>(path, std::chrono::milliseconds(200));
}

}  // namespace tolvane::ctl
