// Reports a lack of memory, threads or descriptors to the HAL's callers.
#pragma once

#include <new>
#include <system_error>

#include "hal/core_audio.h"

namespace tolvane::hal {

/// Returns the status of `work()`, or kTolvaneExhaustedError if it throws std::bad_alloc or
/// std::system_error. [not-io]
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
