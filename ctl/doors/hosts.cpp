#include "ctl/doors/hosts.h"

#include <algorithm>
#include <cstring>

namespace tolvane::ctl {

namespace {

std::array<unsigned char, 16> bytesOf(const sockaddr_storage& sender) {
  std::array<unsigned char, 16> bytes{};
  if (sender.ss_family == AF_INET6) {
    std::memcpy(bytes.data(), &reinterpret_cast<const sockaddr_in6&>(sender).sin6_addr, 16);
  } else {
    bytes[10] = bytes[11] = 0xFF;  // as IPv6 maps it
    std::memcpy(bytes.data() + 12, &reinterpret_cast<const sockaddr_in&>(sender).sin_addr, 4);
  }
  return bytes;
}

}  // namespace

Hosts::Host& Hosts::find(const sockaddr_storage& sender, Time now) {
  const auto address = bytesOf(sender);
  auto found =
      std::find_if(hosts_.begin(), hosts_.end(), [&](const Host& host) { return host.address == address; });
  if (found == hosts_.end()) {
    if (hosts_.size() >= kMost) {
      const auto oldest =
          std::find_if(hosts_.rbegin(), hosts_.rend(), [](const Host& host) { return !host.isTrusted; });
      hosts_.erase(std::next(oldest).base());
    }
    found = hosts_.insert(hosts_.begin(), Host{.address = address, .lastHeard = now});
  }
  if (now - found->lastHeard > kTrustLasts) found->isTrusted = false;
  found->lastHeard = now;
  hosts_.splice(hosts_.begin(), hosts_, found);
  return hosts_.front();
}

bool Hosts::trust(Host& host) {
  if (host.isTrusted) return true;
  for (Host& other : hosts_) {
    if (host.lastHeard - other.lastHeard > kTrustLasts) other.isTrusted = false;
  }
  const auto trusted =
      std::count_if(hosts_.begin(), hosts_.end(), [](const Host& each) { return each.isTrusted; });
  host.isTrusted = trusted < static_cast<std::ptrdiff_t>(kMostTrusted);
  return host.isTrusted;
}

}  // namespace tolvane::ctl
