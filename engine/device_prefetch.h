#pragma once

namespace tolvane {

/// Lets the HAL begin to find its devices, and returns at once. The first list of devices then waits less.
/// Where the HAL knows no such thing, this does nothing. [main-thread]
void prefetchDevices() noexcept;

}  // namespace tolvane
