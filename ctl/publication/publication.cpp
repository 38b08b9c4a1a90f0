#include "ctl/publication/publication.h"

#include <utility>

namespace tolvane::ctl {

void Publication::edit(Routes routes, Time now) {
  waiting_ = std::move(routes);
  poll(now);
}

void Publication::poll(Time now) {
  if (!waiting_ || !isFree(now)) return;
  write_(*waiting_);
  waiting_.reset();
  // Taken after the publication, so that a cycle that begins after the mark uses it.
  last_ = Last{cycles_.mark(), now};
  ++count_;
}

std::optional<Publication::Time> Publication::due(Time now) const {
  if (!waiting_) return std::nullopt;
  return now + kAskAgain;
}

bool Publication::wasPlayed(Time now) const noexcept {
  return !last_ || cycles_.hasEndedSince(last_->mark) || isWithoutCycles(now);
}

bool Publication::isFree(Time now) const noexcept {
  return !last_ || cycles_.hasBegunSince(last_->mark) || isWithoutCycles(now);
}

bool Publication::isWithoutCycles(Time now) const noexcept {
  return now - last_->at >= kLongestWait && !cycles_.hasBegunSince(last_->mark) &&
         cycles_.isQuietSince(last_->mark);
}

}  // namespace tolvane::ctl
