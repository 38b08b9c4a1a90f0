#include "ctl/http/exchange.h"

#include <utility>

namespace tolvane::ctl::http {

void Exchange::send(FromClient message) {
  bool wasEmpty = false;
  {
    const std::lock_guard lock(mutex_);
    wasEmpty = fromClients_.empty();
    fromClients_.push_back(std::move(message));
  }
  if (wasEmpty) wake_.wake(1);
}

std::optional<FromClient> Exchange::nextFromClient() {
  const std::lock_guard lock(mutex_);
  if (fromClients_.empty()) {
    while (wake_.next()) {
    }
    return std::nullopt;
  }
  FromClient message = std::move(fromClients_.front());
  fromClients_.pop_front();
  return message;
}

void Exchange::send(ToClient message) {
  const std::lock_guard lock(mutex_);
  toClients_.push_back(std::move(message));
}

std::optional<ToClient> Exchange::nextToClient() {
  const std::lock_guard lock(mutex_);
  if (toClients_.empty()) return std::nullopt;
  ToClient message = std::move(toClients_.front());
  toClients_.pop_front();
  return message;
}

std::size_t Exchange::countToClients() const {
  const std::lock_guard lock(mutex_);
  return toClients_.size();
}

}  // namespace tolvane::ctl::http
