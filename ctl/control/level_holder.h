#pragma once

#include <cstddef>
#include <vector>

#include "ctl/control/answer.h"

namespace tolvane::ctl::control {

/// Holds the clips of all channels until they are reset. [main-thread]
class LevelHolder {
 public:
  /// Notes the clips of a reading, and sets those that are held in it.
  void hold(Meters& meters) {
    hold(meters.inputs, inputs_);
    hold(meters.outputs, outputs_);
  }
  void reset() {
    inputs_.clear();
    outputs_.clear();
  }

 private:
  static void hold(std::vector<Level>& levels, std::vector<bool>& held) {
    held.resize(levels.size());
    for (std::size_t c = 0; c < levels.size(); ++c) {
      held[c] = held[c] || levels[c].isClipped;
      levels[c].isClipped = held[c];
    }
  }

  std::vector<bool> inputs_;
  std::vector<bool> outputs_;
};

}  // namespace tolvane::ctl::control
