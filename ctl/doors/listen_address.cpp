#include "ctl/doors/listen_address.h"

#include <charconv>
#include <cstring>

#include <arpa/inet.h>

#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

Failure badAddress(const std::string& text) {
  return {'"' + printable(text) + "\" is not [ADDRESS:]PORT, with a numeric address and a port up to 65535",
          ExitStatus::usage};
}

/// Fills the address from its numeric text. False if it is none.
bool fillAddress(ListenAddress& listen, std::string host, std::uint16_t port) {
  const bool isIpv6 = host.size() > 2 && host.front() == '[' && host.back() == ']';
  if (isIpv6) {
    auto& ipv6 = reinterpret_cast<sockaddr_in6&>(listen.address);
    ipv6.sin6_family = AF_INET6;
    ipv6.sin6_port = htons(port);
    listen.length = sizeof ipv6;
    return ::inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), &ipv6.sin6_addr) == 1;
  }
  if (host == "localhost") host = "127.0.0.1";
  auto& ipv4 = reinterpret_cast<sockaddr_in&>(listen.address);
  ipv4.sin_family = AF_INET;
  ipv4.sin_port = htons(port);
  listen.length = sizeof ipv4;
  return ::inet_pton(AF_INET, host.c_str(), &ipv4.sin_addr) == 1;
}

}  // namespace

Result<ListenAddress, Failure> parseListenAddress(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  const bool hasHost = colon != std::string::npos;
  const std::string host = hasHost ? text.substr(0, colon) : "127.0.0.1";
  const std::string_view digits = std::string_view(text).substr(hasHost ? colon + 1 : 0);
  std::uint16_t port = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  if (error != std::errc() || stop != digits.data() + digits.size()) return badAddress(text);
  ListenAddress listen;
  if (!fillAddress(listen, host, port)) return badAddress(text);
  return listen;
}

bool ListenAddress::isLoopback() const noexcept {
  if (address.ss_family == AF_INET6) {
    const auto& ipv6 = reinterpret_cast<const sockaddr_in6&>(address);
    return IN6_IS_ADDR_LOOPBACK(&ipv6.sin6_addr) != 0;
  }
  const auto& ipv4 = reinterpret_cast<const sockaddr_in&>(address);
  return ntohl(ipv4.sin_addr.s_addr) >> 24U == 127;
}

std::string ListenAddress::text() const {
  return textOf(address);
}

std::string textOf(const sockaddr_storage& address) {
  char host[INET6_ADDRSTRLEN] = "";
  if (address.ss_family == AF_INET6) {
    const auto& ipv6 = reinterpret_cast<const sockaddr_in6&>(address);
    ::inet_ntop(AF_INET6, &ipv6.sin6_addr, host, sizeof host);
    return '[' + std::string(host) + "]:" + std::to_string(ntohs(ipv6.sin6_port));
  }
  const auto& ipv4 = reinterpret_cast<const sockaddr_in&>(address);
  ::inet_ntop(AF_INET, &ipv4.sin_addr, host, sizeof host);
  return std::string(host) + ':' + std::to_string(ntohs(ipv4.sin_port));
}

}  // namespace tolvane::ctl
