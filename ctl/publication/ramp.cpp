#include "ctl/publication/ramp.h"

#include <algorithm>

#include "core/routing/sounding_routes.h"

namespace tolvane::ctl {

/// The gain of each pair of channels that sounds.
std::map<Ramp::Pair, float> Ramp::gainsOf(const Routes& routes) {
  std::map<Pair, float> gains;
  for (const PatchConnection* route : soundingRoutes(routes))
    gains[{route->inputChannel, route->outputChannel}] += route->gain;
  return gains;
}

Ramp::Ramp(const Routes& routes) : goal_(routes), goalGains_(gainsOf(routes)) {
  for (const auto& [key, gain] : goalGains_) ways_[key] = {gain, gain, gain, 1, 0};
}

void Ramp::setGoal(const Routes& routes, std::uint32_t steps) {
  goal_ = routes;
  goalGains_ = gainsOf(routes);
  steps_ = std::max<std::uint32_t>(1, steps);
  isTravelling_ = true;
  for (auto& [key, way] : ways_) {
    const auto goal = goalGains_.find(key);
    const float to = goal == goalGains_.end() ? 0.0F : goal->second;
    if (to == way.to && (way.stepsLeft > 0 || way.now == to)) continue;
    way = {way.now, to, way.now, steps_, steps_};
  }
}

void Ramp::admit() {
  for (const auto& [key, gain] : goalGains_) {
    if (ways_.size() >= kMaxPatchEntries) return;
    ways_.try_emplace(key, Way{0.0F, gain, 0.0F, steps_, steps_});
  }
}

std::optional<Routes> Ramp::next() {
  if (!isTravelling_) return std::nullopt;
  admit();
  bool isThere = true;
  Routes routes;
  for (auto way = ways_.begin(); way != ways_.end();) {
    Way& its = way->second;
    if (its.stepsLeft > 0) {
      --its.stepsLeft;
      const double share = static_cast<double>(its.stepsLeft) / its.steps;
      const double to = static_cast<double>(its.to);
      its.now = static_cast<float>(to + (static_cast<double>(its.from) - to) * share);
    }
    const bool isWanted = goalGains_.contains(way->first);
    if (!isWanted && its.stepsLeft == 0) {
      way = ways_.erase(way);
      continue;
    }
    isThere = isThere && its.stepsLeft == 0;
    routes.push_back({way->first.first, way->first.second, its.now, true});
    ++way;
  }
  if (!isThere || ways_.size() != goalGains_.size()) return routes;
  isTravelling_ = false;
  return goal_;
}

}  // namespace tolvane::ctl
