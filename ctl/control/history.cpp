#include "ctl/control/history.h"

#include <algorithm>
#include <utility>

namespace tolvane::ctl::control {

void History::add(std::vector<RouteEdit> inverse, const Sender& sender) {
  const bool isSameGesture =
      sender.gesture != 0 && redo_.empty() && !undo_.empty() && undo_.back().sender == sender;
  redo_.clear();
  if (isSameGesture && undo_.back().routes < kMostRoutes) return join(undo_.back(), std::move(inverse));
  undo_.push_back({{}, 0, sender});
  join(undo_.back(), std::move(inverse));
  if (undo_.size() > kMostSteps) undo_.pop_front();
}

void History::join(Step& step, std::vector<RouteEdit> inverse) {
  for (RouteEdit& edit : inverse) {
    // The first of several changes of one route takes back all.
    if (isTakenBack(step, edit)) continue;
    step.routes += routesIn(edit);
    step.edits.push_back(std::move(edit));
  }
}

bool History::isTakenBack(const Step& step, const RouteEdit& edit) {
  const auto* change = std::get_if<ChangeRoute>(&edit);
  if (change == nullptr) return false;
  for (auto earlier = step.edits.rbegin(); earlier != step.edits.rend(); ++earlier) {
    const auto* its = std::get_if<ChangeRoute>(&*earlier);
    if (its == nullptr) return false;  // indices before it mean other routes
    if (its->index == change->index) return true;
  }
  return false;
}

std::size_t History::routesIn(const RouteEdit& edit) noexcept {
  const auto* replacement = std::get_if<ReplaceRoutes>(&edit);
  return replacement == nullptr ? 1 : 1 + replacement->routes.size();
}

bool History::undo(RouteList& list) {
  return take(undo_, redo_, list);
}

bool History::redo(RouteList& list) {
  return take(redo_, undo_, list);
}

bool History::take(std::deque<Step>& from, std::deque<Step>& to, RouteList& list) {
  if (from.empty()) return false;
  Step step = std::move(from.back());
  from.pop_back();
  std::reverse(step.edits.begin(), step.edits.end());
  for (RouteEdit& edit : step.edits) list.apply(edit);
  step.sender.gesture = 0;  // the gesture has ended
  to.push_back(std::move(step));
  return true;
}

}  // namespace tolvane::ctl::control
