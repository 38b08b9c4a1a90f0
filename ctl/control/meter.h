#pragma once

#include <optional>

#include "ctl/control/answer.h"

namespace tolvane::ctl::control {

/// Measures the levels of the device's channels. [main-thread]
class Meter {
 public:
  virtual ~Meter() = default;
  /// Asks for the levels since the previous time. Does nothing while the previous answer has not been taken.
  virtual void ask() = 0;
  /// The levels that were asked for; none while they are not there yet, and after they were taken.
  [[nodiscard]] virtual std::optional<Meters> take() = 0;
};

}  // namespace tolvane::ctl::control
