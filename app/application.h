#pragma once

namespace tolvane {

/// The whole program but its name: makes the application object and its delegate, runs until the window is
/// closed, and returns the exit status, 0. Reads no argument, no environment variable and no settings. To be
/// called once, first thing on the main thread.
int runApplication();

}  // namespace tolvane
