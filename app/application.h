#pragma once

namespace tolvane {

/// The whole program. Makes the application object and its delegate, runs until the window is closed, and
/// returns the exit status, 0. Reads no arguments, environment variables or settings of its own. Call once,
/// first thing on the main thread.
int runApplication();

}  // namespace tolvane
