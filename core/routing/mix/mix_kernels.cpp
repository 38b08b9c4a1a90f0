#include "core/routing/mix/mix_kernels.h"

#include <atomic>

// Targets that are not compiled. SSE4 and AVX3_DL add no instruction that the loops use. SVE's vectors have
// no size at compile time, and the loops keep vectors in arrays; processors with SVE run the NEON loops.
#define HWY_DISABLED_TARGETS (HWY_SSE4 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)

// Highway compiles the lines up to HWY_ONCE once for each of its targets, by including this file again.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "core/routing/mix/mix_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "core/routing/mix/lanes-inl.h"
#include "core/routing/mix/planar-inl.h"
#include "core/routing/mix/tiles-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tolvane {
namespace HWY_NAMESPACE {

const MixKernels& kernels() {
  constexpr const char* kName = &HWY_STR(HWY_NAMESPACE)[2];  // without "N_"
#if HWY_TARGET == HWY_SCALAR
  static constexpr MixKernels kKernels = {kName, 1, false, scalePlanar, mixPlanar, nullptr, nullptr};
#else
  static constexpr MixKernels kKernels = {kName,     kWidth,   kLoadsMasked, scalePlanar,
                                          mixPlanar, mixTiles, mixLanes};
#endif
  return kKernels;
}

}  // namespace HWY_NAMESPACE
}  // namespace tolvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tolvane {

namespace {

// Null until a variant is chosen. Every thread would choose the same one, so none has to wait.
constinit std::atomic<const MixKernels*> chosen = nullptr;

#if HWY_ARCH_X86_64
// Whether the processor has every instruction set that Highway enables for a target. Highway's own check is
// in its library, which is not linked.
bool runsSsse3() noexcept {
  return __builtin_cpu_supports("ssse3") != 0;
}
bool runsAvx2() noexcept {
  return runsSsse3() && __builtin_cpu_supports("sse4.2") != 0 && __builtin_cpu_supports("aes") != 0 &&
         __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("avx2") != 0 &&
         __builtin_cpu_supports("bmi") != 0 && __builtin_cpu_supports("bmi2") != 0 &&
         __builtin_cpu_supports("fma") != 0;
}
bool runsAvx3() noexcept {
  return runsAvx2() && __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
         __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
         __builtin_cpu_supports("avx512cd") != 0;
}
#endif

}  // namespace

MixKernelList allMixKernels() noexcept {
  MixKernelList all = {};
  int count = 0;
#if HWY_ARCH_X86_64
  // Needed before the compiler's own constructors have run.
  __builtin_cpu_init();
#if HWY_TARGETS & HWY_AVX3
  if (runsAvx3()) all.variants[count++] = &N_AVX3::kernels();
#endif
#if HWY_TARGETS & HWY_AVX2
  if (runsAvx2()) all.variants[count++] = &N_AVX2::kernels();
#endif
#if (HWY_TARGETS & HWY_SSSE3) && HWY_STATIC_TARGET != HWY_SSSE3
  if (runsSsse3()) all.variants[count++] = &N_SSSE3::kernels();
#endif
#endif
  all.variants[count] = &HWY_STATIC_DISPATCH(kernels)();
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
#endif
