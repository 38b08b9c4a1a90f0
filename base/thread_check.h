// The thread tags of hal/core_audio.h, asserted. In builds with TOLVANE_DEBUG_CHECKS a function that is
// called where its tag forbids it ends the process with one line that names it. In other builds nothing of
// this is left.
#pragma once

namespace tolvane {

#if defined(TOLVANE_DEBUG_CHECKS)

/// While one of these lives, its thread is inside an IO callback. Whoever calls a callback makes one around
/// the call, and so does a callback that a system's own HAL calls. [any-thread]
class IoCallbackScope {
 public:
  IoCallbackScope() noexcept;
  ~IoCallbackScope();
  IoCallbackScope(const IoCallbackScope&) = delete;
  IoCallbackScope& operator=(const IoCallbackScope&) = delete;
};

/// At the start of a [not-io] function, which `function` is: ends the process inside an IO callback.
/// [any-thread]
void checkNotIo(const char* function = __builtin_FUNCTION()) noexcept;

/// At the start of a [main-thread] function: ends the process inside an IO callback, and on every thread but
/// the main one. That is the thread which calls such a function first: in the window, in tolvanectl and in a
/// test the one that runs main(). [any-thread]
void checkMainThread(const char* function = __builtin_FUNCTION()) noexcept;

/// From now on the calling thread is the main thread: for a program that hands the role over. The one before
/// it has finished. [not-io]
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
