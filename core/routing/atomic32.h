// Atomic access to 32-bit fields of plain records. The records keep their layout and stay trivially copyable.
// The main thread and the IO thread both use these functions, so there is no data race. Every function is
// wait-free. [any-thread]
//
// The functions use compiler built-ins, because the macOS standard library in use lacks std::atomic_ref.
#pragma once

#include <cstdint>
#include <type_traits>

namespace tolvane {

template <class T>
concept Word32 = std::is_trivially_copyable_v<T> && alignof(T) == sizeof(std::int32_t) &&
                 alignof(T) == sizeof(T);  // NOLINT(misc-redundant-expression)

static_assert(__atomic_always_lock_free(4, nullptr), "the IO thread must never meet a lock");

template <Word32 T>
[[nodiscard]] inline T loadRelaxed(const T& field) noexcept {
  T value;
  __atomic_load(&field, &value, __ATOMIC_RELAXED);
  return value;
}

template <Word32 T>
inline void storeRelaxed(T& field, T value) noexcept {
  __atomic_store(&field, &value, __ATOMIC_RELAXED);
}

/// Everything written before the addRelease() that stored the value is visible after this load.
[[nodiscard]] inline std::int32_t loadAcquire(const std::int32_t& field) noexcept {
  return __atomic_load_n(&field, __ATOMIC_ACQUIRE);
}

/// Adds `addend` and publishes everything written before. Returns the new value; wraps around.
inline std::int32_t addRelease(std::int32_t& field, std::int32_t addend) noexcept {
  return __atomic_add_fetch(&field, addend, __ATOMIC_ACQ_REL);
}

}  // namespace tolvane
