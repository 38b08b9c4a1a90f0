// The Core Audio HAL's C surface, as the rest of the program sees it. On macOS it is the system's framework;
// elsewhere hal/ declares the same records and functions under their real names and implements them.
//
// Thread tags, used in every header of the program:
//   [main-thread]  the thread that runs the user interface, or the one thread of a program without one
//   [io-thread]    a device's real-time thread, inside the IO callback
//   [any-thread]   any thread, including an IO thread: does not lock, wait or allocate
//   [not-io]       any thread except an IO thread: may lock, wait or allocate
//
// base/thread_check.h asserts [main-thread] and [not-io] in debug builds. A function that is documented to
// return a status on an IO thread does so in every build instead.
#pragma once

#if defined(TOLVANE_SYSTEM_HAL)
#include <CoreAudio/CoreAudio.h>
#include <CoreFoundation/CoreFoundation.h>
#else
#include "hal/surface/audio_hardware.h"    // IWYU pragma: export
#include "hal/surface/cf_string.h"         // IWYU pragma: export
#include "hal/surface/core_audio_types.h"  // IWYU pragma: export
#endif
#include "hal/surface/hardware_periods.h"      // IWYU pragma: export
#include "hal/surface/io_thread_scheduling.h"  // IWYU pragma: export
#include "hal/surface/rehearsal.h"             // IWYU pragma: export
#include "hal/surface/removed_links.h"         // IWYU pragma: export

// Extensions of this program's own HAL. The system's framework has no such property and returns no such
// status.

/// System object: CFStringRef, the caller releases. Names the sound servers that accepted the connection but
/// do not answer, for example "jack, pipewire". Their devices are missing from the list that this thread read
/// last. Empty if no server is missing.
inline constexpr AudioObjectPropertySelector kTolvanePropertySilentServers = 0x736C6E74;  // 'slnt'

/// System object: CFStringRef, the caller releases. What the user should know of installed sound systems that
/// cannot be used, or are too old for something, each on a line. Empty if there is nothing.
inline constexpr AudioObjectPropertySelector kTolvanePropertyProblems = 0x70726F62;  // 'prob'

/// Device, input or output, element: the channel from 1; CFStringRef, the caller releases. The sound server's
/// names of the node and of its port behind the channel, as a patch bay shows them. Unknown if there is none.
inline constexpr AudioObjectPropertySelector kTolvaneDevicePropertyChannelNode = 0x636E6F64;  // 'cnod'
inline constexpr AudioObjectPropertySelector kTolvaneDevicePropertyChannelPort = 0x63707274;  // 'cprt'

/// Device: CFStringRef, the caller releases. The command that puts the sound card into the sound server's
/// profile with all its channels, in order and untouched ("pro-audio"). Empty if the card is in that profile,
/// has none, or is not the sound server's.
inline constexpr AudioObjectPropertySelector kTolvaneDevicePropertyProAudioCommand = 0x70726F61;  // 'proa'

/// Device: CFStringRef, the caller releases. The `uid` under which the device's sound card can be used
/// without the sound server, once it is claimed. Empty if the device is not one card of a sound server.
inline constexpr AudioObjectPropertySelector kTolvaneDevicePropertyCardUID = 0x63756964;  // 'cuid'

/// System object: such a `uid` as UTF-8, without a terminator. It can be set, not read. Setting it asks the
/// sound server for the card, and lists the card as a device of its own from then on, as long as the process
/// lives. Waits up to five seconds. Statuses: kAudioHardwareBadDeviceError (no such card),
/// kAudioDevicePermissionsError (the server keeps it), kAudioHardwareUnsupportedOperationError (there is no
/// session bus on which the server could be asked), kAudioHardwareNotReadyError (no answer in time). For a
/// card that is listed already it does nothing and succeeds.
inline constexpr AudioObjectPropertySelector kTolvanePropertyClaim = 0x636C616D;  // 'clam'

/// System object: UInt32, any value. It can be set, not read. Setting it asks the sound servers for their
/// devices and does not wait for the answers. A program can so do something else before it reads its first
/// list.
inline constexpr AudioObjectPropertySelector kTolvanePropertyPrefetch = 0x70666368;  // 'pfch'

/// Device: UInt32. The channels of the device's monitor: what its outputs play, for a member of an aggregate.
/// 0 if it has no monitor.
inline constexpr AudioObjectPropertySelector kTolvaneDevicePropertyMonitorChannels = 0x6D6E6368;  // 'mnch'

/// The call failed because the system has no thread, memory or descriptor left for it.
inline constexpr OSStatus kTolvaneExhaustedError = 0x78687374;  // 'xhst'
