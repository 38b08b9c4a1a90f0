#include "ctl/devices/silence.h"

#include <algorithm>
#include <utility>

namespace tolvane::ctl {

void Silence::note(std::string_view silentServers, Clock::time_point listedAt) {
  constexpr std::string_view kSeparator = ", ";
  const auto before = std::exchange(since_, {});
  while (!silentServers.empty()) {
    const std::string_view server = silentServers.substr(0, silentServers.find(kSeparator));
    const auto known = before.find(server);
    since_.emplace(server, known == before.end() ? lastList_ : known->second);
    silentServers.remove_prefix(std::min(silentServers.size(), server.size() + kSeparator.size()));
  }
  lastList_ = listedAt;
}

bool Silence::hasLasted(std::chrono::duration<double> limit) const {
  return std::all_of(since_.begin(), since_.end(),
                     [&](const auto& server) { return lastList_ - server.second >= limit; });
}

}  // namespace tolvane::ctl
