// A system that has no memory, thread or descriptor left, as the HAL's callers are told of it.
#pragma once

#include <new>
#include <system_error>

#include "hal/core_audio.h"

namespace tolvane::hal {

/// The status that `work()` gives; kTolvaneExhaustedError when it throws std::bad_alloc or std::system_error.
/// [not-io]
template <class Work>
OSStatus orExhausted(const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return kTolvaneExhaustedError;
  } catch (const std::system_error&) {
    return kTolvaneExhaustedError;
  }
}

}  // namespace tolvane::hal
