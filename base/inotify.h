// File events of Linux.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace tolvane {

/// Watches files and folders. Events are the IN_ constants of <sys/inotify.h>. Calls must not overlap.
/// [not-io]
class Inotify {
 public:
  struct Event {
    std::uint32_t what;     // IN_Q_OVERFLOW: events were lost
    std::string_view name;  // of the entry of a watched folder; empty if the event is not about an entry
  };

  /// If the system has no descriptor left, nothing is ever watched.
  Inotify() noexcept;
  Inotify(const Inotify&) = delete;
  Inotify& operator=(const Inotify&) = delete;
  ~Inotify();

  /// For poll(): readable when drain() has something to take. -1 if the system had none left.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

  /// Watches for these events. Returns the watch's number, or -1 if the path does not exist or is not
  /// readable, or the user has no watch left. A file that is already watched keeps its number and is watched
  /// for the new events only.
  int add(const char* path, std::uint32_t events) const noexcept;

  /// Ends a watch.
  void remove(int watch) const noexcept;

  /// Takes all pending events and passes each to `take`; does not wait. The event's name is valid only during
  /// the call.
  void drain(const std::function<void(const Event&)>& take) const;

 private:
  int descriptor_;
};

}  // namespace tolvane
