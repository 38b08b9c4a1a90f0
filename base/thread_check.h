// Asserts the thread tags of hal/core_audio.h. In builds with TOLVANE_DEBUG_CHECKS, a function that is called
// where its tag forbids it ends the process with one line that names the function. Other builds compile the
// checks away.
#pragma once

namespace tolvane {

#if defined(TOLVANE_DEBUG_CHECKS)

/// Marks its thread as inside an IO callback for the lifetime of the scope. Whoever calls an IO callback
/// makes a scope around the call. A callback that the operating system's HAL calls makes one itself.
/// [any-thread]
class IoCallbackScope {
 public:
  IoCallbackScope() noexcept;
  ~IoCallbackScope();
  IoCallbackScope(const IoCallbackScope&) = delete;
  IoCallbackScope& operator=(const IoCallbackScope&) = delete;
};

/// Called at the start of a [not-io] function. Ends the process inside an IO callback. `function` is the name
/// of the caller. [any-thread]
void checkNotIo(const char* function = __builtin_FUNCTION()) noexcept;

/// Called at the start of a [main-thread] function. Ends the process inside an IO callback and on any thread
/// but the main one. The main thread is the first thread to call such a function: in the window, in
/// tolvanectl and in a test it is the one that runs main(). [any-thread]
void checkMainThread(const char* function = __builtin_FUNCTION()) noexcept;

/// Makes the calling thread the main thread, for a program that hands the role over. The previous main thread
/// must have finished. [not-io]
void becomeMainThread() noexcept;

#else

class IoCallbackScope {
 public:
  IoCallbackScope() noexcept {}  // NOLINT(modernize-use-equals-default): or it would be an unused variable
};

inline void checkNotIo() noexcept {}
inline void checkMainThread() noexcept {}
inline void becomeMainThread() noexcept {}

#endif

}  // namespace tolvane
