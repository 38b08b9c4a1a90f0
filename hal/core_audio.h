// The Core Audio HAL's C surface, as the rest of the program sees it. On macOS it is the system's framework;
// elsewhere hal/ declares the same records and functions under their real names and implements them.
//
// Thread tags, used in every header of the program:
//   [main-thread]  the thread that runs the user interface, or the one thread of a program without one
//   [io-thread]    a device's real-time thread, inside the IO callback
//   [any-thread]   every thread, the IO thread included: neither locks nor waits nor allocates
//   [not-io]       every thread but an IO thread: may lock, wait or allocate
#pragma once

#if defined(TOLVANE_SYSTEM_HAL)
#include <CoreAudio/CoreAudio.h>
#include <CoreFoundation/CoreFoundation.h>
#else
#include "hal/surface/audio_hardware.h"    // IWYU pragma: export
#include "hal/surface/cf_string.h"         // IWYU pragma: export
#include "hal/surface/core_audio_types.h"  // IWYU pragma: export
#endif
