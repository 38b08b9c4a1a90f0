#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "ctl/patch/source.h"

namespace tolvane::ctl {

/// Lets the gains of the routes that sound travel to new ones in equal steps, one published list a step. So
/// no step is ever larger than the way divided by the number of steps; if lists are published late, the way
/// takes longer. A route that begins to sound comes from 0, one that ends goes to 0. [main-thread]
///
/// On the way, several routes of the same channels are one route with the sum of their gains. The last list
/// is the new one as it stands. No more than 64 routes sound at any time, so a route that begins may wait
/// until another one has ended.
class Ramp {
 public:
  /// `routes` sound now.
  explicit Ramp(const Routes& routes);

  /// From now on the routes travel to these, in this number of steps, at least 1. A route whose goal is
  /// unchanged goes on as it was.
  void setGoal(const Routes& routes, std::uint32_t steps);

  /// The list of the next step; none if the goal is reached.
  [[nodiscard]] std::optional<Routes> next();

  [[nodiscard]] bool isTravelling() const noexcept { return isTravelling_; }

 private:
  /// An input and an output, counted from 0.
  using Pair = std::pair<std::int64_t, std::int64_t>;
  struct Way {
    float from = 0.0F;
    float to = 0.0F;
    float now = 0.0F;
    std::uint32_t steps = 0;
    std::uint32_t stepsLeft = 0;
  };
  static std::map<Pair, float> gainsOf(const Routes& routes);
  void admit();

  Routes goal_;
  std::map<Pair, float> goalGains_;
  std::map<Pair, Way> ways_;  // of the routes that sound
  std::uint32_t steps_ = 1;
  bool isTravelling_ = false;
};

}  // namespace tolvane::ctl
