#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <netinet/in.h>

#include "ctl/control/command.h"

namespace tolvane::ctl::osc {

/// A datagram, which may wait for several receivers.
using Datagram = std::shared_ptr<const std::string>;

/// True if address and port are the same. [any-thread]
[[nodiscard]] bool isSame(const sockaddr_storage& a, const sockaddr_storage& b) noexcept;

/// Who hears events. A subscription ends unless it is repeated. [main-thread]
class Subscribers {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::size_t kMost = 16;
  static constexpr std::chrono::seconds kLasts{10};
  /// Datagrams that may wait for one subscriber.
  static constexpr std::size_t kLongestQueue = 1024;

  struct Subscriber {
    sockaddr_storage address{};
    control::Subscribe wants;
    Time ends;
    std::deque<Datagram> queue;
  };

  /// Begins, changes or prolongs a subscription. False: kMost others have one.
  [[nodiscard]] bool add(const sockaddr_storage& address, const control::Subscribe& wants, Time now);
  void remove(const sockaddr_storage& address);
  /// Removes those whose time has come.
  void expire(Time now);

  /// Queues datagrams for all that want them. Returns the addresses of those whose queue was too long; they
  /// are removed.
  [[nodiscard]] std::vector<sockaddr_storage> queue(const std::vector<Datagram>& datagrams,
                                                    bool control::Subscribe::*wanted);

  [[nodiscard]] bool anyWants(bool control::Subscribe::*what) const;
  [[nodiscard]] std::deque<Subscriber>& all() noexcept { return subscribers_; }
  [[nodiscard]] const std::deque<Subscriber>& all() const noexcept { return subscribers_; }

 private:
  std::deque<Subscriber> subscribers_;
};

}  // namespace tolvane::ctl::osc
