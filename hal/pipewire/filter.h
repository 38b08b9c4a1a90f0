// Our node in the server's graph: one port per channel, called once a cycle.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hal/pipewire/cycle_runner.h"
#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

/// Everything here is used on the loop thread only, or when that has ended.
class Filter {
 public:
  /// `changed` is called when the node has come up or gone.
  Filter(const Library& library, pw_core* core, CycleRunner& runner, std::size_t inputs, std::size_t outputs,
         const std::string& latency, Task changed);

  /// When it has returned, the runner is called no more.
  ~Filter();
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;

  /// Asks the server for another cycle length: frames, a slash, frames a second.
  void suggestLatency(const std::string& latency);

  /// The node's identifier once the server has given it one, else SPA_ID_INVALID.
  [[nodiscard]] std::uint32_t nodeId() const noexcept { return nodeId_; }

  /// Failed, or taken away by the server: to be made anew.
  [[nodiscard]] bool isDead() const noexcept { return isDead_; }

 private:
  std::vector<FilterPort*> addPorts(pw_direction direction, std::size_t count);
  void onStateChanged(pw_filter_state state);

  const Library& library_;
  CycleRunner& runner_;
  Task changed_;
  pw_filter* filter_;
  spa_hook hook_{};
  std::uint32_t nodeId_ = SPA_ID_INVALID;
  bool isDead_ = false;
  bool wasConnecting_ = false;
};

}  // namespace tolvane::hal::pipewire
