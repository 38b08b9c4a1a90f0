#pragma once

namespace tolvane::ctl {

/// Opens /dev/null on each of the descriptors 0 to 2 that is closed. Otherwise a file opened later would get
/// that number, and the trace and messages would be written into it. False if /dev/null cannot be opened.
/// [main-thread, before anything else]
[[nodiscard]] bool openStandardDescriptors() noexcept;

}  // namespace tolvane::ctl
