#include "ctl/soak/random_edits.h"

#include <algorithm>

#include "core/routing/sounding_routes.h"

namespace tolvane::ctl {

namespace {

constexpr std::size_t kMostRoutes = 72;  // more than sound

}  // namespace

const Routes& RandomEdits::next() {
  if (routes_.empty()) {
    routes_.push_back(route());
    return routes_;
  }
  PatchConnection& one = routes_[below(routes_.size())];
  switch (below(4)) {
    case 0:
    case 1:
      one.gain = gain();
      break;
    case 2:
      one.active = !one.active;
      break;
    default:
      if (below(kMostRoutes) < routes_.size()) {
        routes_.erase(routes_.begin() + (&one - routes_.data()));
      } else {
        routes_.insert(routes_.begin() + (&one - routes_.data()), route());
      }
  }
  return routes_;
}

/// One channel in twenty is beyond the device's.
PatchConnection RandomEdits::route() {
  const auto channel = [this](std::size_t count) {
    return static_cast<std::int64_t>(below(20) == 0 ? count + below(3) : below(count));
  };
  return {channel(inputs_), channel(outputs_), gain(), true};
}

float RandomEdits::gain() {
  if (below(3) == 0) return 1.0F;
  return static_cast<float>(below(10'001)) / 10'000.0F;
}

Routes straightRoutes(std::size_t inputs, std::size_t outputs) {
  Routes routes(std::min({inputs, outputs, static_cast<std::size_t>(kMaxPatchEntries)}));
  std::int64_t channel = 0;
  for (PatchConnection& route : routes) {
    route = {channel, channel, 1.0F, true};
    ++channel;
  }
  return routes;
}

}  // namespace tolvane::ctl
