#include "ctl/publication/ramped_publication.h"

namespace tolvane::ctl {

void RampedPublication::edit(const Routes& routes, Time now) {
  if (!rampSteps_) {
    publication_.edit(routes, now);
    return;
  }
  ramp_.setGoal(routes, rampSteps_());
  poll(now);
}

void RampedPublication::poll(Time now) {
  publication_.poll(now);
  // A step is never replaced before it was heard, so none is left out.
  if (publication_.due(now) || !publication_.wasPlayed(now)) return;
  if (auto step = ramp_.next()) publication_.edit(std::move(*step), now);
}

std::optional<RampedPublication::Time> RampedPublication::due(Time now) const {
  if (ramp_.isTravelling()) return now + Publication::kAskAgain;
  return publication_.due(now);
}

}  // namespace tolvane::ctl
