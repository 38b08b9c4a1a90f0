// The Core Audio HAL's C surface, as the rest of the program sees it. On macOS it is the system's framework;
// elsewhere hal/ declares the same records and functions under their real names and implements them.
//
// Thread tags, used in every header of the program:
//   [main-thread]  the thread that runs the user interface, or the one thread of a program without one
//   [io-thread]    a device's real-time thread, inside the IO callback
//   [any-thread]   every thread, the IO thread included: neither locks nor waits nor allocates
//   [not-io]       every thread but an IO thread: may lock, wait or allocate
//
// base/thread_check.h asserts [main-thread] and [not-io] in debug builds. A function that promises a status
// to an IO thread answers with that in every build.
#pragma once

#if defined(TOLVANE_SYSTEM_HAL)
#include <CoreAudio/CoreAudio.h>
#include <CoreFoundation/CoreFoundation.h>
#else
#include "hal/surface/audio_hardware.h"    // IWYU pragma: export
#include "hal/surface/cf_string.h"         // IWYU pragma: export
#include "hal/surface/core_audio_types.h"  // IWYU pragma: export
#endif
#include "hal/surface/io_thread_scheduling.h"  // IWYU pragma: export

// What this program's own HAL has beyond the framework, which knows no such property and gives no such
// status.

/// System: CFStringRef, the caller releases: the sound servers that have taken the connection and do not
/// answer, so that their devices are missing in the list that this thread read last, as "jack, pipewire";
/// empty when none is missing.
inline constexpr AudioObjectPropertySelector kTolvanePropertySilentServers = 0x736C6E74;  // 'slnt'

/// The call failed since the system has no thread, memory or descriptor left for it.
inline constexpr OSStatus kTolvaneExhaustedError = 0x78687374;  // 'xhst'
