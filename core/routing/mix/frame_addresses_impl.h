// The addresses of an interleaved buffer's frames, for the loops. The rules of mix_kernels_impl.h hold here.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tolvane {
namespace {

/// Addresses of frames that are one stride apart. They cost no instruction each: the addressing modes of
/// loads and stores add a register, or twice a register.
class Frames {
 public:
  __attribute__((always_inline)) explicit Frames(std::ptrdiff_t stride) noexcept
      : one_(static_cast<std::uintptr_t>(stride) * sizeof(float)), three_(3 * one_) {
    // Hides the values from the compiler, which would otherwise compute each address from the previous one.
    __asm__("" : "+r"(one_), "+r"(three_));
  }

  /// `frame` is a compile-time constant. `first` is the address in frame 0.
  __attribute__((always_inline)) float* operator()(std::uintptr_t first, std::size_t frame) const noexcept {
    const std::uintptr_t steps[] = {0, one_, 2 * one_, three_};
    // NOLINTNEXTLINE(performance-no-int-to-ptr): as a pointer it would have to stay inside its buffer
    return reinterpret_cast<float*>(first + frame / 4 * 4 * one_ + steps[frame % 4]);
  }

 private:
  std::uintptr_t one_;  // in bytes
  std::uintptr_t three_;
};

}  // namespace
}  // namespace tolvane
