#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include <jack/types.h>

namespace tolvane::hal {

/// The links of one direction between the device's ports and ours, one per channel: which of them somebody
/// has removed, from what the server tells of each change. Its own list of connections lags behind by one
/// cycle, and a cycle may take any time.
class PortLinks {
 public:
  struct Link {
    const jack_port_t* source;
    const jack_port_t* target;

    bool operator==(const Link&) const = default;
  };

  /// Sets the links, in channel order. None counts as removed. Must be called before the client is active.
  /// [not-io]
  void setLinks(std::vector<Link> links);

  /// The server has made or removed a connection. Returns true if it is one of these links. [any-thread]
  bool noteChange(const Link& changed, bool isMade) noexcept;

  /// True if the link was removed, also where one of its ports goes. [any-thread]
  [[nodiscard]] bool isRemoved(std::size_t channel) const noexcept { return removed_[channel].load(); }

 private:
  std::vector<Link> links_;
  std::vector<std::atomic<bool>> removed_;  // one per link
};

}  // namespace tolvane::hal
