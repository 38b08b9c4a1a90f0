#pragma once

#include <cstdlib>

namespace tolvane::fuzz {

/// Ends the process if the condition is false. The fuzzer then keeps the input.
inline void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace tolvane::fuzz
