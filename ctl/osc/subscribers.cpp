#include "ctl/osc/subscribers.h"

#include <algorithm>
#include <cstring>

namespace tolvane::ctl::osc {

bool isSame(const sockaddr_storage& a, const sockaddr_storage& b) noexcept {
  if (a.ss_family != b.ss_family) return false;
  if (a.ss_family == AF_INET6) {
    const auto& left = reinterpret_cast<const sockaddr_in6&>(a);
    const auto& right = reinterpret_cast<const sockaddr_in6&>(b);
    return left.sin6_port == right.sin6_port && left.sin6_scope_id == right.sin6_scope_id &&
           std::memcmp(&left.sin6_addr, &right.sin6_addr, sizeof left.sin6_addr) == 0;
  }
  const auto& left = reinterpret_cast<const sockaddr_in&>(a);
  const auto& right = reinterpret_cast<const sockaddr_in&>(b);
  return left.sin_port == right.sin_port && left.sin_addr.s_addr == right.sin_addr.s_addr;
}

bool Subscribers::add(const sockaddr_storage& address, const control::Subscribe& wants, Time now) {
  expire(now);
  for (Subscriber& subscriber : subscribers_) {
    if (!isSame(subscriber.address, address)) continue;
    subscriber.wants = wants;
    subscriber.ends = now + kLasts;
    return true;
  }
  if (subscribers_.size() >= kMost) return false;
  subscribers_.push_back({address, wants, now + kLasts, {}});
  return true;
}

void Subscribers::remove(const sockaddr_storage& address) {
  std::erase_if(subscribers_, [&](const Subscriber& each) { return isSame(each.address, address); });
}

void Subscribers::expire(Time now) {
  std::erase_if(subscribers_, [now](const Subscriber& each) { return now >= each.ends; });
}

std::vector<sockaddr_storage> Subscribers::queue(const std::vector<Datagram>& datagrams,
                                                 bool control::Subscribe::*wanted) {
  std::vector<sockaddr_storage> slow;
  for (Subscriber& subscriber : subscribers_) {
    if (!(subscriber.wants.*wanted)) continue;
    // An event of any length may be queued if nothing waits.
    if (!subscriber.queue.empty() && subscriber.queue.size() + datagrams.size() > kLongestQueue) {
      slow.push_back(subscriber.address);
      continue;
    }
    subscriber.queue.insert(subscriber.queue.end(), datagrams.begin(), datagrams.end());
  }
  for (const sockaddr_storage& address : slow) remove(address);
  return slow;
}

bool Subscribers::anyWants(bool control::Subscribe::*what) const {
  return std::any_of(subscribers_.begin(), subscribers_.end(),
                     [what](const Subscriber& each) { return each.wants.*what; });
}

}  // namespace tolvane::ctl::osc
