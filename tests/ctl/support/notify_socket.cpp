#include "ctl/support/notify_socket.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <stdexcept>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tolvane::test {

using Clock = std::chrono::steady_clock;

NotifySocket::NotifySocket(Kind kind) : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  address_ = (kind == Kind::abstract ? "@tolvane-test" : "") + folder_ / "notify";
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  std::memcpy(name.sun_path, address_.data(), std::min(address_.size(), sizeof name.sun_path - 1));
  if (kind == Kind::abstract) name.sun_path[0] = '\0';
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + address_.size());
  if (::bind(socket_, reinterpret_cast<const sockaddr*>(&name), size) != 0) throw std::runtime_error("bind");
}

NotifySocket::~NotifySocket() {
  ::close(socket_);
}

bool NotifySocket::waitFor(const std::string& report) {
  return takeUntil(Clock::now() + std::chrono::minutes(1),
                   [&](const std::string& taken) { return taken == report; });
}

int NotifySocket::count(const std::string& report, std::chrono::milliseconds time) {
  int equal = 0;
  takeUntil(Clock::now() + time, [&](const std::string& taken) {
    equal += taken == report ? 1 : 0;
    return false;
  });
  return equal;
}

bool NotifySocket::has(const std::string& report) const {
  return std::find(reports_.begin(), reports_.end(), report) != reports_.end();
}

bool NotifySocket::takeUntil(Clock::time_point end, const std::function<bool(const std::string&)>& isEnough) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd source{socket_, POLLIN, 0};
    if (left <= 0 || ::poll(&source, 1, static_cast<int>(left)) <= 0) return false;
    char bytes[4096];
    const ssize_t size = ::recv(socket_, bytes, sizeof bytes, 0);
    reports_.emplace_back(bytes, static_cast<std::size_t>(std::max<ssize_t>(0, size)));
    if (isEnough(reports_.back())) return true;
  }
}

}  // namespace tolvane::test
