// The promised limits of waits, not the usual times. A busy machine must keep them too.
#pragma once

#include <chrono>

namespace tolvane::test {

/// Reading the whole list of devices, even if a server hangs.
inline constexpr std::chrono::milliseconds kListBound{200};
/// Stopping a device whose server is gone or hangs.
inline constexpr std::chrono::seconds kStopBound{1};
/// Time until a device that is back is heard again.
inline constexpr std::chrono::seconds kReturnBound{2};

}  // namespace tolvane::test
