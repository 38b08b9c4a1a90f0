// A client that says what it is told to, also what no browser would.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tolvane::test {

/// A TCP connection to a port of this machine.
class TcpSocket {
 public:
  /// `bufferBytes` is how much the system keeps for a reader who does not read; 0: as much as it wants.
  explicit TcpSocket(std::uint16_t port, int bufferBytes = 0) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    if (bufferBytes > 0) ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &bufferBytes, sizeof bufferBytes);
    sockaddr_in there{};
    there.sin_family = AF_INET;
    there.sin_port = htons(port);
    there.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    isOpen_ = ::connect(socket_, reinterpret_cast<const sockaddr*>(&there), sizeof there) == 0;
  }
  TcpSocket(const TcpSocket&) = delete;
  TcpSocket& operator=(const TcpSocket&) = delete;
  ~TcpSocket() { ::close(socket_); }

  [[nodiscard]] bool isOpen() const { return isOpen_; }
  /// False if the connection is broken.
  bool send(const std::string& bytes) const {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
      const ssize_t count = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) return false;
      sent += static_cast<std::size_t>(count);
    }
    return true;
  }
  /// Closes this half of the connection: the server may still send.
  void endSending() const { ::shutdown(socket_, SHUT_WR); }
  /// Up to so many bytes; empty if the connection has ended or nothing comes in time.
  [[nodiscard]] std::string receive(std::size_t most, int timeoutMs) {
    pollfd source{socket_, POLLIN, 0};
    if (::poll(&source, 1, timeoutMs) <= 0) return {};
    std::string bytes(most, '\0');
    const ssize_t count = ::recv(socket_, bytes.data(), most, 0);
    if (count <= 0) hasEnded_ = true;
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }
  /// All that comes until the other side ends.
  [[nodiscard]] std::string receiveAll(int timeoutMs) {
    std::string all;
    for (std::string part; !(part = receive(65536, timeoutMs)).empty();) all += part;
    return all;
  }
  [[nodiscard]] bool hasEnded() const { return hasEnded_; }

 private:
  int socket_;
  bool isOpen_ = false;
  bool hasEnded_ = false;
};

inline std::string handshake(const std::string& host, const std::string& more = "",
                             const std::string& path = "/ws") {
  return "GET " + path + " HTTP/1.1\r\nHost: " + host +
         "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
         "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n" +
         more + "\r\n";
}

/// A frame of a client, masked.
inline std::string frame(const std::string& payload, int opcode = 1, bool isFinal = true) {
  std::string bytes(1, static_cast<char>((isFinal ? 0x80 : 0) | opcode));
  if (payload.size() < 126) {
    bytes += static_cast<char>(0x80U | payload.size());
  } else if (payload.size() < 65536) {
    bytes += static_cast<char>(0x80 | 126);
    for (const int shift : {8, 0}) bytes += static_cast<char>(payload.size() >> shift & 0xFFU);
  } else {
    bytes += static_cast<char>(0x80 | 127);
    for (const int shift : {56, 48, 40, 32, 24, 16, 8, 0})
      bytes += static_cast<char>(payload.size() >> shift & 0xFFU);
  }
  const char mask[] = {'\x12', '\x34', '\x56', '\x78'};
  bytes.append(mask, 4);
  for (std::size_t i = 0; i < payload.size(); ++i) bytes += static_cast<char>(payload[i] ^ mask[i % 4]);
  return bytes;
}

/// A WebSocket, open once the server's answer has come.
class WebSocket {
 public:
  explicit WebSocket(std::uint16_t port, const std::string& more = "", int bufferBytes = 0)
      : socket_(port, bufferBytes) {
    socket_.send(handshake("127.0.0.1:" + std::to_string(port), more));
  }

  /// The server's answer to the handshake, which ends with an empty line.
  [[nodiscard]] const std::string& answer(int timeoutMs = 0) {
    while (answer_.find("\r\n\r\n") == std::string::npos) {
      const std::string part = socket_.receive(1, timeoutMs);
      if (part.empty()) break;
      answer_ += part;
    }
    return answer_;
  }
  void send(const std::string& text) const { socket_.send(frame(text)); }
  [[nodiscard]] TcpSocket& socket() { return socket_; }

  /// The next text; none if none comes in time or the server closes.
  [[nodiscard]] std::optional<std::string> receive(int timeoutMs = 0) {
    if (answer(timeoutMs).find("\r\n\r\n") == std::string::npos) return std::nullopt;
    for (;;) {
      if (auto text = takeFrame()) return text;
      if (closeCode_ != 0) return std::nullopt;
      const std::string part = socket_.receive(65536, timeoutMs);
      if (part.empty()) return std::nullopt;
      bytes_ += part;
    }
  }
  /// The code with which the server has closed; 0: it has not.
  [[nodiscard]] int closeCode() const { return closeCode_; }

 private:
  std::optional<std::string> takeFrame() {
    const auto byte = [this](std::size_t i) { return static_cast<unsigned char>(bytes_[i]); };
    while (bytes_.size() >= 2) {
      std::size_t size = byte(1) & 0x7FU;
      std::size_t head = 2;
      if (size >= 126) {
        const std::size_t digits = size == 126 ? 2 : 8;
        if (bytes_.size() < 2 + digits) return std::nullopt;
        size = 0;
        for (std::size_t i = 0; i < digits; ++i) size = size << 8U | byte(2 + i);
        head += digits;
      }
      if (bytes_.size() < head + size) return std::nullopt;
      const int opcode = byte(0) & 0xF;
      const bool isFinal = (byte(0) & 0x80U) != 0;
      std::string payload = bytes_.substr(head, size);
      bytes_.erase(0, head + size);
      if (opcode == 8) {
        closeCode_ = payload.size() < 2 ? 1005
                                        : static_cast<unsigned char>(payload[0]) << 8 |
                                              static_cast<unsigned char>(payload[1]);
        return std::nullopt;
      }
      if (opcode == 9) socket_.send(frame(payload, 10));
      if (opcode > 2) continue;
      text_ += payload;
      if (isFinal) return std::exchange(text_, {});
    }
    return std::nullopt;
  }

  TcpSocket socket_;
  std::string answer_;
  std::string bytes_;
  std::string text_;
  int closeCode_ = 0;
};

}  // namespace tolvane::test
