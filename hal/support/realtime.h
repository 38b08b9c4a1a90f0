#pragma once

namespace tolvane::hal {

/// Asks for SCHED_FIFO for the calling thread, and for timers without slack where it is not granted. True
/// when it was granted. [not-io]
bool becomeRealtime() noexcept;

}  // namespace tolvane::hal
