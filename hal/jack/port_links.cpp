#include "hal/jack/port_links.h"

#include <algorithm>
#include <utility>

namespace tolvane::hal {

void PortLinks::setLinks(std::vector<Link> links) {
  links_ = std::move(links);
  removed_ = std::vector<std::atomic<bool>>(links_.size());
}

bool PortLinks::noteChange(const Link& changed, bool isMade) noexcept {
  const auto link = std::find(links_.begin(), links_.end(), changed);
  if (link == links_.end()) return false;
  removed_[static_cast<std::size_t>(link - links_.begin())].store(!isMade);
  return true;
}

}  // namespace tolvane::hal
