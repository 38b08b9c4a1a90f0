#include "core/mix/mix_kernels.h"

#include <atomic>

#include "core/mix/mix_kernels_forms.h"

namespace tolvane {

namespace {

// Null until a form is chosen. Every thread would choose the same one, so none has to wait.
constinit std::atomic<const MixKernels*> chosen = nullptr;

#if defined(__x86_64__)
/// Whether the processor has every instruction set that core/CMakeLists.txt enables for this form.
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
  if (runsAvx512()) all.forms[count++] = &kAvx512MixKernels;
  if (__builtin_cpu_supports("avx2") != 0) all.forms[count++] = &kAvx2MixKernels;
#endif
  all.forms[count] = &kBaselineMixKernels;
  return all;
}

const MixKernels& mixKernels() noexcept {
  const MixKernels* form = chosen.load(std::memory_order_relaxed);
  if (form == nullptr) {
    form = allMixKernels().forms[0];
    chosen.store(form, std::memory_order_relaxed);
  }
  return *form;
}

void useMixKernels(const MixKernels& form) noexcept {
  chosen.store(&form, std::memory_order_relaxed);
}

namespace {

[[maybe_unused]] const MixKernels& chosenBeforeMain = mixKernels();

}  // namespace

}  // namespace tolvane
