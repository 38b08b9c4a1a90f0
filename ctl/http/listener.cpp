#include "ctl/http/listener.h"

#include <cerrno>
#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tolvane::ctl::http {

namespace {

constexpr int kBacklog = 64;

bool isBound(int socket, const ListenAddress& address, ListenAddress& actual) {
  const int yes = 1;
  ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  actual.length = sizeof actual.address;
  return ::bind(socket, reinterpret_cast<const sockaddr*>(&address.address), address.length) == 0 &&
         ::listen(socket, kBacklog) == 0 &&
         ::getsockname(socket, reinterpret_cast<sockaddr*>(&actual.address), &actual.length) == 0;
}

void makeNonBlocking(int socket) {
  ::fcntl(socket, F_SETFD, FD_CLOEXEC);
  ::fcntl(socket, F_SETFL, O_NONBLOCK);
}

}  // namespace

Result<Listener, Failure> listenAt(const ListenAddress& address) {
  const std::string what = "HTTP at " + address.text();
  Listener listener;
  listener.socket = ::socket(address.address.ss_family, SOCK_STREAM, 0);
  if (listener.socket < 0) return systemFailure(what, errno);
  makeNonBlocking(listener.socket);
  if (isBound(listener.socket, address, listener.address)) return listener;
  const Failure failure = systemFailure(what, errno);
  ::close(listener.socket);
  return failure;
}

int acceptNext(int listening) {
  const int socket = ::accept(listening, nullptr, nullptr);
  if (socket < 0) {
    if (errno == EMFILE || errno == ENFILE) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return -1;
  }
  makeNonBlocking(socket);
  // The system would queue megabytes for a client that does not read.
  const int bufferBytes = 128 << 10;
  ::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &bufferBytes, sizeof bufferBytes);
  return socket;
}

}  // namespace tolvane::ctl::http
