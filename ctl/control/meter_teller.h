#pragma once

#include <chrono>
#include <optional>

#include "ctl/control/level_holder.h"
#include "ctl/control/meter.h"

namespace tolvane::ctl::control {

/// Reads the levels 20 times a second while somebody wants them, and holds the clips. [main-thread]
class MeterTeller {
 public:
  using Time = std::chrono::steady_clock::time_point;
  static constexpr std::chrono::milliseconds kInterval{50};

  /// `meter` may be null: there are no levels then. It must outlive the object.
  explicit MeterTeller(Meter* meter) : meter_(meter) {}

  /// The levels since the previous reading, if they are due at `now` and there.
  [[nodiscard]] std::optional<Meters> read(Time now, bool isWanted);
  /// When to call read() next, while levels are wanted. Without a meter there is no such time.
  [[nodiscard]] Time due(Time now) const;

  /// Forgets the clips, those not read yet too. While levels are wanted, one reading may be left out.
  void resetClips();

 private:
  void ask(Time now);
  /// The levels that were asked for, if they are there, with the clips that are held.
  [[nodiscard]] std::optional<Meters> take();

  Meter* meter_;
  LevelHolder clips_;
  Time next_;                   // when to ask again
  bool isAsked_ = false;        // and not answered
  bool isWanted_ = false;       // as last read
  bool isStale_ = false;        // the next reading covers a time in which nobody wanted levels
  bool isBeforeReset_ = false;  // the next reading is of the time before the reset of the clips
};

}  // namespace tolvane::ctl::control
