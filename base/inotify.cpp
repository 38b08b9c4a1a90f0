#include "base/inotify.h"

#include <sys/inotify.h>
#include <unistd.h>

namespace tolvane {

Inotify::Inotify() noexcept : descriptor_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

Inotify::~Inotify() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

int Inotify::add(const char* path, std::uint32_t events) const noexcept {
  return ::inotify_add_watch(descriptor_, path, events);
}

void Inotify::remove(int watch) const noexcept {
  ::inotify_rm_watch(descriptor_, watch);
}

void Inotify::drain(const std::function<void(const Event&)>& take) const {
  alignas(inotify_event) char buffer[4096];
  for (ssize_t size = 0; (size = ::read(descriptor_, buffer, sizeof buffer)) > 0;) {
    for (ssize_t at = 0; at < size;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(buffer + at);
      take({event->mask, event->len == 0 ? std::string_view() : event->name});
      at += static_cast<ssize_t>(sizeof *event + event->len);
    }
  }
}

}  // namespace tolvane
