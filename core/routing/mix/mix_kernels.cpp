#include "core/routing/mix/mix_kernels.h"

#include <atomic>

#include "core/routing/mix/mix_kernels_variants.h"

namespace tolvane {

namespace {

// Null until a variant is chosen. Every thread would choose the same one, so none has to wait.
constinit std::atomic<const MixKernels*> chosen = nullptr;

#if defined(__x86_64__)
/// Whether the processor has every instruction set that core/CMakeLists.txt enables for this variant.
bool runsAvx512() noexcept {
  return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
         __builtin_cpu_supports("avx512dq") != 0;
}
#endif

}  // namespace

MixKernelList allMixKernels() noexcept {
  MixKernelList all = {};
  int count = 0;
#if defined(__x86_64__)
  // Needed before the compiler's own constructors have run.
  __builtin_cpu_init();
  if (runsAvx512()) all.variants[count++] = &kAvx512MixKernels;
  if (__builtin_cpu_supports("avx2") != 0) all.variants[count++] = &kAvx2MixKernels;
#endif
  all.variants[count] = &kBaselineMixKernels;
  return all;
}

const MixKernels& mixKernels() noexcept {
  const MixKernels* variant = chosen.load(std::memory_order_relaxed);
  if (variant == nullptr) {
    variant = allMixKernels().variants[0];
    chosen.store(variant, std::memory_order_relaxed);
  }
  return *variant;
}

void useMixKernels(const MixKernels& variant) noexcept {
  chosen.store(&variant, std::memory_order_relaxed);
}

namespace {

[[maybe_unused]] const MixKernels& chosenBeforeMain = mixKernels();

}  // namespace

}  // namespace tolvane
