// The times that are promised, not those that are usual: bounds of waits, which a busy machine keeps as well.
#pragma once

#include <chrono>

namespace tolvane::test {

/// The whole list of devices, also with a server that hangs.
inline constexpr std::chrono::milliseconds kListBound{200};
/// Stopping a device whose server is gone or hangs.
inline constexpr std::chrono::seconds kStopBound{1};
/// A device that is back is heard again.
inline constexpr std::chrono::seconds kReturnBound{2};

}  // namespace tolvane::test
