// The links in the server's graph between our filter's ports and a device's ports.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "hal/pipewire/link_end.h"
#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

/// A fixed number of places, each with one link or none. Use only on the loop thread, or after that thread
/// has ended.
class LinkSet {
 public:
  /// Calls `changed` when a link has come up, gone or failed, but never from within the functions below.
  LinkSet(const Library& library, std::size_t places, Task changed);
  ~LinkSet();
  LinkSet(const LinkSet&) = delete;
  LinkSet& operator=(const LinkSet&) = delete;

  /// Asks the server for a link between these two ends, unless the place already has it. Any other link of
  /// the place is removed first. If the link has failed, a later call asks again; the pause between attempts
  /// grows. The same goes for a link that no longer carries audio: when a node of a running graph was
  /// suspended, servers before 1.0 may leave its links so for ever. A link that the server has removed
  /// without an error is not asked for again: either one of its ports has gone too, or somebody has removed
  /// the link and wants it so.
  ///
  /// `isSilent`: nothing comes through the link. When a session manager starts and suspends a node, a server
  /// before 1.0 may leave a link so that counts as active. It is made anew too, but only a few times: its
  /// other end may have nothing to say.
  void want(pw_core* core, std::size_t place, const LinkEnd& from, const LinkEnd& to, bool isSilent = false);

  /// Removes the place's link, if any.
  void drop(std::size_t place);
  void dropAll();

  /// Somebody else has removed a link if both of its ports are still there. The server may tell of the link
  /// before it tells of a port. So first ask the server whether that is all; true if there is a link to ask
  /// about. After the answer, drop or replace the links whose ports have gone, then confirm the rest.
  [[nodiscard]] bool askAboutRemoved();
  void confirmRemoved();

  /// True if somebody else has removed the place's link. Confirmed removals only.
  [[nodiscard]] bool isRemoved(std::size_t place) const noexcept;

  /// True if a link has carried audio and does not now, although its ports are there: call want() again.
  [[nodiscard]] bool isAnyPaused() const noexcept;

  /// Of the `count` places from `first` on, the number whose link carries audio, or will as soon as the graph
  /// runs.
  [[nodiscard]] std::size_t ready(std::size_t first, std::size_t count) const noexcept;
  /// Likewise, the number whose link the server has removed, confirmed or not.
  [[nodiscard]] std::size_t removed(std::size_t first, std::size_t count) const noexcept;

 private:
  class Link;
  struct Place {
    std::unique_ptr<Link> link;
    std::chrono::milliseconds pause{0};  // before the next attempt if the link fails
    bool wasActive = false;              // a link between these ends has carried audio
    int silentAttempts = 0;              // made anew because it was silent, since it was not
  };

  const Library& library_;
  Task changed_;
  std::vector<Place> places_;
};

}  // namespace tolvane::hal::pipewire
