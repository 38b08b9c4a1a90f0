// The connections in the server's graph between our filter's ports and a device's.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

/// One end of a link, by the server's identifiers.
struct LinkEnd {
  std::uint32_t nodeId = 0;
  std::uint32_t portId = 0;
  bool operator==(const LinkEnd&) const = default;
};

/// A fixed number of places, each with one link or none. Everything here is used on the loop thread only, or
/// when that has ended.
class LinkSet {
 public:
  /// `changed` is called when a link has come up, gone or failed; not while the server is being told.
  LinkSet(const Library& library, std::size_t places, Task changed);
  ~LinkSet();
  LinkSet(const LinkSet&) = delete;
  LinkSet& operator=(const LinkSet&) = delete;

  /// Asks for a link between these two unless the place has it already; instead of any other it has. One that
  /// fails is asked for again, less and less often.
  void want(pw_core* core, std::size_t place, const LinkEnd& from, const LinkEnd& to);

  /// The place is to have no link.
  void drop(std::size_t place);
  void dropAll();

  /// The places from `first` on, `count` of them, whose link carries audio, or will as soon as the graph
  /// runs.
  [[nodiscard]] std::size_t ready(std::size_t first, std::size_t count) const noexcept;

 private:
  class Link;
  struct Place {
    std::unique_ptr<Link> link;
    std::chrono::milliseconds pause{0};  // before the link is asked for again, should it fail
  };

  const Library& library_;
  Task changed_;
  std::vector<Place> places_;
};

}  // namespace tolvane::hal::pipewire
