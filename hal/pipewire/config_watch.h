#pragma once

#include <optional>
#include <string>

#include "base/inotify.h"
#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

/// Calls `changed` on the loop thread when a file may have changed; spurious calls are possible. The file and
/// its folders need not exist yet. Created and destroyed on the loop thread, or while that thread is not
/// running.
class ConfigWatch {
 public:
  ConfigWatch(LoopThread& thread, std::string path, Task changed);
  ~ConfigWatch();
  ConfigWatch(const ConfigWatch&) = delete;
  ConfigWatch& operator=(const ConfigWatch&) = delete;

 private:
  void arm();
  void onReadable();

  pw_loop* loop_;
  std::string path_;
  Task changed_;
  std::optional<Inotify> inotify_;  // none if there is no file to watch
  int watch_ = -1;
  spa_source* source_ = nullptr;
};

}  // namespace tolvane::hal::pipewire
