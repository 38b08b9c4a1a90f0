// Where the frames of an interleaved buffer lie, as the loops of mix_kernels_impl.h use it; the rules are the
// same.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tolvane {
namespace {

/// The addresses of frames that lie one stride apart, without an instruction for each: a processor adds a
/// register, or twice of one, as it loads and stores.
class Frames {
 public:
  __attribute__((always_inline)) explicit Frames(std::ptrdiff_t stride) noexcept
      : one_(static_cast<std::uintptr_t>(stride) * sizeof(float)), three_(3 * one_) {
    // Or the compiler would see how it is made, and make each address from the one before it.
    __asm__("" : "+r"(one_), "+r"(three_));
  }

  /// `frame` is a constant, `first` the address in frame 0.
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
