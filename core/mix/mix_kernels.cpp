#include "core/mix/mix_kernels.h"

#include "core/mix/mix_kernels_forms.h"

namespace tolvane {

namespace {

struct Forms {
  const MixKernels* list[4] = {};

  Forms() noexcept {
    int count = 0;
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f") != 0) list[count++] = &kAvx512MixKernels;
    if (__builtin_cpu_supports("avx2") != 0) list[count++] = &kAvx2MixKernels;
#endif
    list[count] = &kBaselineMixKernels;
  }
};

// Chosen before main, so that the IO thread finds it done.
const Forms kForms;

}  // namespace

const MixKernels& mixKernels() noexcept {
  return *kForms.list[0];
}

const MixKernels* const* allMixKernels() noexcept {
  return kForms.list;
}

}  // namespace tolvane
