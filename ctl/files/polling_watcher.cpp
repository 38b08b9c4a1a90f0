#include <utility>

#include "ctl/files/file_watcher.h"

namespace tolvane::ctl {

namespace {

// The name of this field of struct stat differs between systems.
template <class Stat>
timespec modificationTime(const Stat& file) {
  if constexpr (requires { file.st_mtimespec; }) {
    return file.st_mtimespec;
  } else {
    return file.st_mtim;
  }
}

}  // namespace

PollingWatcher::PollingWatcher(std::string path, std::chrono::milliseconds interval)
    : path_(std::move(path)), interval_(interval), lastStamp_(stampNow()) {}

bool PollingWatcher::changed() {
  return std::exchange(lastStamp_, stampNow()) != lastStamp_;
}

PollingWatcher::Stamp PollingWatcher::stampNow() const {
  struct stat file {};
  if (::stat(path_.c_str(), &file) != 0) return {};
  const timespec modified = modificationTime(file);
  return {file.st_dev, file.st_ino, file.st_size, modified.tv_sec, modified.tv_nsec};
}

}  // namespace tolvane::ctl
