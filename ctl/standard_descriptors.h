#pragma once

namespace tolvane::ctl {

/// Opens /dev/null on those of the descriptors 0 to 2 that are closed, before anything else of the program
/// gets such a number and then finds the trace or a message in it. False when that cannot be.
/// [main-thread, first of all]
[[nodiscard]] bool openStandardDescriptors() noexcept;

}  // namespace tolvane::ctl
