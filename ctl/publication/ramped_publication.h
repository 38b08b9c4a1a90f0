#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

#include "ctl/publication/publication.h"
#include "ctl/publication/ramp.h"

namespace tolvane::ctl {

/// Publishes edits of the routes, at once or in steps of one cycle. [main-thread]
class RampedPublication {
 public:
  using Time = Publication::Time;

  /// `publication` must outlive the object. `routes` are published already. `rampSteps` says in how many
  /// cycles an edit is to arrive, and is asked at each edit; 0: at once. Without it every edit is published
  /// as it is.
  RampedPublication(Publication& publication, const Routes& routes,
                    std::function<std::uint32_t()> rampSteps = {})
      : publication_(publication), rampSteps_(std::move(rampSteps)), ramp_(routes) {}

  /// Replaces the whole route list.
  void edit(const Routes& routes, Time now);

  /// Publishes what waits, or the next step, if its time has come.
  void poll(Time now);

  /// When to call poll(); none if nothing waits.
  [[nodiscard]] std::optional<Time> due(Time now) const;

 private:
  Publication& publication_;
  std::function<std::uint32_t()> rampSteps_;  // empty: no ramps
  Ramp ramp_;
};

}  // namespace tolvane::ctl
