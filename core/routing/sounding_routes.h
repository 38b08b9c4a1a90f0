#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "core/patch/patch_connection.h"

namespace tolvane {

/// The most routes that sound at once. Active routes beyond this number are not heard.
inline constexpr std::int32_t kMaxPatchEntries = 64;

/// The routes of a list that sound, as pointers into the list. The list must outlive it. [any-thread]
class SoundingRoutes {
 public:
  [[nodiscard]] const PatchConnection* const* begin() const noexcept { return routes_.data(); }
  [[nodiscard]] const PatchConnection* const* end() const noexcept { return routes_.data() + count_; }
  [[nodiscard]] std::size_t size() const noexcept { return count_; }

 private:
  friend SoundingRoutes soundingRoutes(std::span<const PatchConnection> routes) noexcept;

  std::array<const PatchConnection*, kMaxPatchEntries> routes_{};
  std::size_t count_ = 0;
};

/// The first 64 active routes of the list, in order. [any-thread]
[[nodiscard]] SoundingRoutes soundingRoutes(std::span<const PatchConnection> routes) noexcept;

}  // namespace tolvane
