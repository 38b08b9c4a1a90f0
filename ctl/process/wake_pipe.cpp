#include "ctl/process/wake_pipe.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace tolvane::ctl {

WakePipe::WakePipe() : ends_{-1, -1} {
  if (::pipe(ends_) != 0) throw std::system_error(errno, std::generic_category());
  for (const int end : ends_) {
    ::fcntl(end, F_SETFL, O_NONBLOCK);
    ::fcntl(end, F_SETFD, FD_CLOEXEC);
  }
}

WakePipe::~WakePipe() {
  ::close(ends_[0]);
  ::close(ends_[1]);
}

void WakePipe::wake(unsigned char byte) const noexcept {
  const int errorBefore = errno;  // a signal handler must restore it
  while (::write(ends_[1], &byte, 1) < 0 && errno == EINTR) {
  }
  errno = errorBefore;
}

std::optional<unsigned char> WakePipe::next() const noexcept {
  unsigned char byte = 0;
  ssize_t count = 0;
  do {
    count = ::read(ends_[0], &byte, 1);
  } while (count < 0 && errno == EINTR);
  return count == 1 ? std::optional(byte) : std::nullopt;
}

}  // namespace tolvane::ctl
