#include "ctl/control/history.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tolvane::ctl::control {

void History::add(std::vector<RouteEdit> inverse, const Sender& sender) {
  const bool isSameGesture =
      sender.gesture != 0 && redo_.empty() && !undo_.empty() && undo_.back().sender == sender;
  redo_.clear();
  if (isSameGesture) {
    // The first of two changes of one route takes back both.
    auto& edits = undo_.back().edits;
    const auto* first = edits.size() == 1 ? std::get_if<ChangeRoute>(&edits.front()) : nullptr;
    const auto* next = inverse.size() == 1 ? std::get_if<ChangeRoute>(&inverse.front()) : nullptr;
    if (first != nullptr && next != nullptr && first->index == next->index) return;
    std::move(inverse.begin(), inverse.end(), std::back_inserter(edits));
    return;
  }
  undo_.push_back({std::move(inverse), sender});
  if (undo_.size() > kMostSteps) undo_.pop_front();
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
