// How long each sound server has not answered.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <string_view>

namespace tolvane::ctl {

/// [main-thread]
class Silence {
 public:
  using Clock = std::chrono::steady_clock;

  /// `begin`: when the first list was asked for.
  explicit Silence(Clock::time_point begin) : lastList_(begin) {}

  /// Takes the silent servers of a list, "jack, pipewire", and the time when the list came.
  void note(std::string_view silentServers, Clock::time_point listedAt);

  /// True if every server that is silent in the last list has been silent for `limit`. A server that has
  /// answered meanwhile is silent from the last list with its answer on.
  [[nodiscard]] bool hasLasted(std::chrono::duration<double> limit) const;

 private:
  Clock::time_point lastList_;
  std::map<std::string, Clock::time_point, std::less<>> since_;  // by server
};

}  // namespace tolvane::ctl
