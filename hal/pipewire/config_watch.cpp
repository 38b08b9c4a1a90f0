#include "hal/pipewire/config_watch.h"

#include <utility>

#include <sys/inotify.h>

namespace tolvane::hal::pipewire {

namespace {

constexpr std::uint32_t kEvents = IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CLOSE_WRITE |
                                  IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

std::string parentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

}  // namespace

ConfigWatch::ConfigWatch(LoopThread& thread, std::string path, Task changed)
    : loop_(thread.loop()), path_(std::move(path)), changed_(std::move(changed)) {
  if (path_.empty() || inotify_.emplace().descriptor() < 0) return;
  source_ = addReader(
      loop_, inotify_->descriptor(),
      [](void* data, int /*descriptor*/, std::uint32_t /*mask*/) {
        static_cast<ConfigWatch*>(data)->onReadable();
      },
      this);
  arm();
}

ConfigWatch::~ConfigWatch() {
  if (source_ != nullptr) destroySource(loop_, source_);
}

/// Watches the file's folder, or the nearest existing folder above it.
void ConfigWatch::arm() {
  std::string armed;
  const auto armNearest = [&] {
    std::string folder = parentOf(path_);
    int watch = inotify_->add(folder.c_str(), kEvents);
    while (watch < 0 && folder != "/") {
      folder = parentOf(folder);
      watch = inotify_->add(folder.c_str(), kEvents);
    }
    if (watch_ >= 0 && watch_ != watch) inotify_->remove(watch_);
    watch_ = watch;
    return folder;
  };
  // Look again: a folder may have been made just before the watch on its parent began.
  for (std::string nearest = armNearest(); nearest != armed; nearest = armNearest()) armed = nearest;
}

void ConfigWatch::onReadable() {
  inotify_->drain([](const Inotify::Event& /*event*/) {});
  arm();
  changed_();
}

}  // namespace tolvane::hal::pipewire
