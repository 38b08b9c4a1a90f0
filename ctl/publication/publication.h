// The way from any edit of the routes to the IO thread: at most one publication a cycle.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "core/patch/patch_connection.h"
#include "ctl/patch/source.h"
#include "ctl/publication/cycle_marks.h"

namespace tolvane::ctl {

/// Publishes the routes of a running engine. Everything that changes them edits through one object of this
/// class.
///
/// The context has two route buffers, so a second publication in one cycle would rewrite the buffer that the
/// cycle is reading. Therefore a list that was published stays until a cycle has begun with it; edits that
/// come sooner wait, and only the newest one is published then. So no cycle sees a mixture of two lists. An
/// edit waits for the end of the running cycle and the begin of the next one at most.
///
/// If no cycle begins for kLongestWait, as on a device that is gone, an edit is published nevertheless,
/// unless a cycle is still running that could read the buffer. So the newest list is there when the device
/// returns.
///
/// Everything here is [main-thread]; the IO thread is never touched.
class Publication {
 public:
  using Clock = std::chrono::steady_clock;
  using Time = Clock::time_point;
  /// Publishes a list into the context, as CoreAudioEngine::writeConnections does.
  using Write = std::function<void(std::span<const PatchConnection>)>;

  /// Longer than any cycle of a device that runs.
  static constexpr std::chrono::milliseconds kLongestWait{250};
  /// How soon to call poll() again while an edit waits. The IO thread cannot wake anybody.
  static constexpr std::chrono::milliseconds kAskAgain{1};

  /// `cycles` marks the cycles of the engine and must outlive the object. What was published before, by the
  /// engine's start, may be replaced at once.
  Publication(CycleMarks& cycles, Write write) : cycles_(cycles), write_(std::move(write)) {}

  /// Replaces the whole route list: publishes it, or lets it wait and drops the list that waited before it.
  void edit(Routes routes, Time now);

  /// Publishes the list that waits, if there is one and its time has come.
  void poll(Time now);

  /// When to call poll(); none if nothing waits.
  [[nodiscard]] std::optional<Time> due(Time now) const;

  /// True if a whole cycle has had the last list, and none is left out if another one follows. A cycle that
  /// has only begun may not have read its list yet, and would take the newer one. True as well if no cycle
  /// begins for kLongestWait.
  [[nodiscard]] bool wasPlayed(Time now) const noexcept;

  /// How many lists were published.
  [[nodiscard]] std::uint64_t count() const noexcept { return count_; }

 private:
  struct Last {
    CycleMarks::Mark mark;
    Time at;
  };

  [[nodiscard]] bool isFree(Time now) const noexcept;
  [[nodiscard]] bool isWithoutCycles(Time now) const noexcept;

  CycleMarks& cycles_;
  Write write_;
  std::optional<Routes> waiting_;
  std::optional<Last> last_;  // the last publication; none before the first
  std::uint64_t count_ = 0;
};

}  // namespace tolvane::ctl
