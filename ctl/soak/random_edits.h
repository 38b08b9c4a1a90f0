#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

#include "ctl/patch/source.h"

namespace tolvane::ctl {

/// Edits of a patch as a busy user makes them: routes come and go, are muted, and change their gains. Always
/// the same edits for the same device. [main-thread]
class RandomEdits {
 public:
  RandomEdits(std::size_t inputs, std::size_t outputs) : inputs_(inputs), outputs_(outputs) {}

  /// Makes one edit and returns the whole patch. Some of its routes are inactive, beyond the first 64, or
  /// name a channel that the device lacks.
  [[nodiscard]] const Routes& next();

 private:
  [[nodiscard]] std::size_t below(std::size_t count) { return random_() % count; }
  [[nodiscard]] PatchConnection route();
  [[nodiscard]] float gain();

  std::size_t inputs_;
  std::size_t outputs_;
  std::mt19937 random_{1};
  Routes routes_;
};

/// Output n from input n for all channels that both directions have, at most 64. [not-io]
[[nodiscard]] Routes straightRoutes(std::size_t inputs, std::size_t outputs);

}  // namespace tolvane::ctl
