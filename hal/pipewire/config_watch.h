#pragma once

#include <string>

#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

/// Tells, on the loop thread, that a file may have changed, also one whose folders are made only later. It
/// may tell too often. Made and destroyed on the thread, or while that is not running.
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
  int descriptor_;
  int watch_ = -1;
  spa_source* source_ = nullptr;
};

}  // namespace tolvane::hal::pipewire
