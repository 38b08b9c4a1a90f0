#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <list>

#include <netinet/in.h>

#include "ctl/doors/token_bucket.h"

namespace tolvane::ctl {

/// What is known of the machines that send. A machine is its IP address, whatever the port: a script sends
/// each message from a new port. [main-thread]
class Hosts {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// The most machines that are remembered. The one that was heard of least lately is forgotten, first of
  /// those that have not said the token.
  static constexpr std::size_t kMost = 64;
  /// The most machines that may have said the token.
  static constexpr std::size_t kMostTrusted = 16;
  static_assert(kMostTrusted < kMost, "there must be one to forget");
  /// A machine that has said the token must say it again after so long a silence.
  static constexpr std::chrono::hours kTrustLasts{1};
  /// Messages a second.
  static constexpr double kRate = 20'000.0;
  static constexpr double kBurst = 4'000.0;

  struct Host {
    std::array<unsigned char, 16> address{};
    TokenBucket messages{kRate, kBurst};
    TokenBucket complaints{1.0, 1.0};  // that there were too many
    TokenBucket guesses{1.0, 5.0};     // tokens
    TokenBucket slow{10.0, 10.0};      // commands that take long
    bool isTrusted = false;
    Time lastHeard;
  };

  /// The sender's machine, which is remembered from now on. The reference holds until the next call.
  [[nodiscard]] Host& find(const sockaddr_storage& sender, Time now);

  /// Notes that the machine has said the token. False: kMostTrusted others have.
  [[nodiscard]] bool trust(Host& host);

 private:
  std::list<Host> hosts_;  // the last heard one first
};

}  // namespace tolvane::ctl
