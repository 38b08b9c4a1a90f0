#include "ctl/process/service_manager.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

std::string_view environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : value;
}

std::optional<std::int64_t> positive(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole && number > 0 ? std::optional(number) : std::nullopt;
}

/// A socket that is connected to `path`, or -1. A leading "@" stands for the NUL of an abstract address.
int connectedTo(std::string_view path) {
  sockaddr_un address{};
  const bool isAddress = path.starts_with('/') || path.starts_with('@');
  if (!isAddress || path.size() >= sizeof address.sun_path) return -1;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  if (path.front() == '@') address.sun_path[0] = '\0';
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());

  const int socket = ::socket(AF_UNIX, SOCK_DGRAM, 0);
  if (socket < 0) return -1;
  ::fcntl(socket, F_SETFD, FD_CLOEXEC);
  ::fcntl(socket, F_SETFL, O_NONBLOCK);
  if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), size) == 0) return socket;
  ::close(socket);
  return -1;
}

/// The watchdog's limit if it is meant for this process.
std::optional<std::chrono::microseconds> watchdogLimit() {
  const std::string_view process = environment("WATCHDOG_PID");
  if (!process.empty() && positive(process) != ::getpid()) return std::nullopt;
  const auto limit = positive(environment("WATCHDOG_USEC"));
  return limit ? std::optional(std::chrono::microseconds(*limit)) : std::nullopt;
}

}  // namespace

ServiceManager::ServiceManager() : socket_(connectedTo(environment("NOTIFY_SOCKET"))) {
  if (isListening()) watchdog_ = watchdogLimit();
}

ServiceManager::~ServiceManager() {
  if (isListening()) ::close(socket_);
}

bool ServiceManager::askForTime(std::chrono::microseconds time) const {
  return send("EXTEND_TIMEOUT_USEC=" + std::to_string(time.count()));
}

bool ServiceManager::tellReady(std::string_view status) const {
  return send("READY=1\nSTATUS=" + printable(status));
}

bool ServiceManager::tellStatus(std::string_view status) const {
  return send("STATUS=" + printable(status));
}

bool ServiceManager::tellAlive() const {
  return send("WATCHDOG=1");
}

bool ServiceManager::tellStopping() const {
  return send("STOPPING=1");
}

bool ServiceManager::send(const std::string& assignments) const {
  return isListening() && ::send(socket_, assignments.data(), assignments.size(), 0) >= 0;
}

}  // namespace tolvane::ctl
