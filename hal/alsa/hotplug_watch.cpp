#include "hal/alsa/hotplug_watch.h"

#include <cerrno>
#include <utility>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "hal/support/thread.h"

namespace tolvane::hal::alsa {

namespace {

constexpr int kTickMs = 500;
// A card's files appear one by one, and get their permissions a little later.
constexpr int kSettleMs = 100;
// No events for open and close: we cause those ourselves when we probe the cards.
constexpr std::uint32_t kEvents = IN_CREATE | IN_DELETE | IN_ATTRIB;

}  // namespace

HotplugWatch::HotplugWatch(std::function<void()> onChange, std::function<bool()> isWaiting,
                           std::string devices)
    : onChange_(std::move(onChange)),
      isWaiting_(std::move(isWaiting)),
      devices_(std::move(devices)),
      stopFd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  watchFolders();
  const SignalsBlocked blocked;
  thread_ = std::thread([this] { run(); });
}

HotplugWatch::~HotplugWatch() {
  eventfd_write(stopFd_, 1);
  thread_.join();
  close(stopFd_);
}

/// Watches /dev too, because /dev/snd comes with the first card and goes with the last.
void HotplugWatch::watchFolders() const {
  inotify_.add(devices_.c_str(), IN_CREATE | IN_DELETE);
  inotify_.add((devices_ + "/snd").c_str(), kEvents);
}

void HotplugWatch::run() {
  pthread_setname_np(pthread_self(), "tolvane-cards");
  pollfd fds[] = {{stopFd_, POLLIN, 0}, {inotify_.descriptor(), POLLIN, 0}};
  for (;;) {
    const int ready = poll(fds, 2, kTickMs);
    if (ready < 0 && errno != EINTR) return;
    if (fds[0].revents != 0) return;
    const bool changed = ready > 0 && fds[1].revents != 0 && takeEvents();
    if (changed) {
      if (poll(fds, 1, kSettleMs) > 0) return;
      watchFolders();
      takeEvents();
    }
    if (changed || isWaiting_()) onChange_();
  }
}

/// Takes all pending events. Returns true if one of them is, or may have been, about sound devices.
bool HotplugWatch::takeEvents() const {
  bool ours = false;
  inotify_.drain([&ours](const Inotify::Event& event) {
    const bool areLost = (event.what & IN_Q_OVERFLOW) != 0;
    ours = ours || areLost || event.name == "snd" || event.name.starts_with("controlC") ||
           event.name.starts_with("pcmC");
  });
  return ours;
}

}  // namespace tolvane::hal::alsa
