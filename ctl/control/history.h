#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "ctl/control/route_list.h"

namespace tolvane::ctl::control {

/// Who sent a command. Successive changes of one sender and gesture are one undo step, unless they are so
/// many that a step would become too large.
struct Sender {
  std::uint64_t number = 0;   // of the doors' choice
  std::uint64_t gesture = 0;  // 0: none
  bool operator==(const Sender&) const = default;
};

/// The steps that undo and redo take. [main-thread]
class History {
 public:
  /// The oldest step beyond this number is forgotten.
  static constexpr std::size_t kMostSteps = 200;
  /// A step that holds so many routes takes no more changes of its gesture; those begin a new step.
  static constexpr std::size_t kMostRoutes = 1000;

  /// Adds a step: edits that were made, in order, each as the one that takes it back. Forgets what could be
  /// redone. A step of the same sender and gesture as the last one becomes part of that, unless that is full.
  void add(std::vector<RouteEdit> inverse, const Sender& sender);

  /// Takes back the last step, or makes it again. False if there is none.
  bool undo(RouteList& list);
  bool redo(RouteList& list);

  [[nodiscard]] std::size_t undoSteps() const noexcept { return undo_.size(); }
  [[nodiscard]] std::size_t redoSteps() const noexcept { return redo_.size(); }

 private:
  struct Step {
    std::vector<RouteEdit> edits;  // to apply in reverse order
    std::size_t routes;            // in them
    Sender sender;
  };
  static void join(Step& step, std::vector<RouteEdit> inverse);
  /// True if taking back the step so far also takes back the edit.
  static bool isTakenBack(const Step& step, const RouteEdit& edit);
  static std::size_t routesIn(const RouteEdit& edit) noexcept;
  static bool take(std::deque<Step>& from, std::deque<Step>& to, RouteList& list);

  std::deque<Step> undo_;
  std::deque<Step> redo_;
};

}  // namespace tolvane::ctl::control
