// A client's UDP socket on the loopback interface.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tolvane::test {

class UdpSocket {
 public:
  /// Binds to an address and a port of the system's choice.
  explicit UdpSocket(const char* address = "127.0.0.1") : socket_(::socket(AF_INET, SOCK_DGRAM, 0)) {
    const sockaddr_in here = addressOf(address, 0);
    if (::bind(socket_, reinterpret_cast<const sockaddr*>(&here), sizeof here) != 0) std::abort();
  }
  UdpSocket(const UdpSocket&) = delete;
  UdpSocket& operator=(const UdpSocket&) = delete;
  ~UdpSocket() { ::close(socket_); }

  [[nodiscard]] std::uint16_t port() const {
    sockaddr_in here{};
    socklen_t length = sizeof here;
    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&here), &length);
    return ntohs(here.sin_port);
  }

  void send(const std::string& bytes, std::uint16_t port, const char* address = "127.0.0.1") const {
    const sockaddr_in to = addressOf(address, port);
    ::sendto(socket_, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
  }

  /// The next datagram; none if none comes in time.
  [[nodiscard]] std::optional<std::string> receive(int timeoutMs = 0) {
    pollfd source{socket_, POLLIN, 0};
    if (::poll(&source, 1, timeoutMs) != 1) return std::nullopt;
    std::string bytes(65536, '\0');
    socklen_t length = sizeof from_;
    const ssize_t count =
        ::recvfrom(socket_, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&from_), &length);
    if (count < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
  }
  /// Where the last datagram came from.
  [[nodiscard]] std::uint16_t senderPort() const { return ntohs(from_.sin_port); }

 private:
  static sockaddr_in addressOf(const char* address, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    ::inet_pton(AF_INET, address, &result.sin_addr);
    return result;
  }

  int socket_;
  sockaddr_in from_{};
};

}  // namespace tolvane::test
