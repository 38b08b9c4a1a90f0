// Our node in the server's graph: it has one port per channel and is called once per cycle.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hal/pipewire/cycle_runner.h"
#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

/// Use only on the loop thread, or after that thread has ended.
class Filter {
 public:
  /// The names of the channels that the ports serve, one for each port; empty if there is none. A patch bay
  /// shows them as the ports' aliases.
  struct ServedChannels {
    std::vector<std::string> inputs;
    std::vector<std::string> outputs;
  };

  /// Calls `changed` when the node has come up or gone.
  Filter(const Library& library, pw_core* core, CycleRunner& runner, const ServedChannels& served,
         const std::string& latency, Task changed);

  /// After it returns, the runner is not called again.
  ~Filter();
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;

  /// Asks the server for another cycle length. The text is frames, a slash and the sample rate: "256/48000".
  void suggestLatency(const std::string& latency);

  /// The node's identifier; SPA_ID_INVALID while the server has not given it one, and when it is dead.
  [[nodiscard]] std::uint32_t nodeId() const noexcept { return nodeId_; }

  /// True if the node has failed or the server has removed it. Make a new filter then.
  [[nodiscard]] bool isDead() const noexcept { return isDead_; }

 private:
  std::vector<FilterPort*> addPorts(pw_direction direction, const std::vector<std::string>& served);
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
