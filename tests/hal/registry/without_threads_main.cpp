// Uses the HAL while the system gives this process few threads or none, and prints the statuses.
#include <cstdio>
#include <cstdlib>

#include <sys/resource.h>
#include <unistd.h>

#include "hal/core_audio.h"

namespace {

constexpr rlim_t kPlenty = 1000;

/// The kernel limits the threads of each user, except root. Becomes a user who has no other threads.
bool becomeNobodyElse() {
  if (::geteuid() != 0) return true;
  const auto id = static_cast<uid_t>(3'000'000 + ::getpid());
  return ::setresgid(id, id, id) == 0 && ::setresuid(id, id, id) == 0;
}

/// Allows so many threads at a time, including that of main().
void allowThreads(rlim_t threads) {
  rlimit limit{};
  ::getrlimit(RLIMIT_NPROC, &limit);
  limit.rlim_cur = threads < limit.rlim_max ? threads : limit.rlim_max;
  ::setrlimit(RLIMIT_NPROC, &limit);
}

void report(const char* call, OSStatus status) {
  std::printf("%s %d\n", call, status);
  std::fflush(stdout);
}

AudioObjectPropertyAddress deviceListAddress() {
  return {kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};
}

AudioObjectID listedLast = kAudioObjectUnknown;

OSStatus list() {
  const AudioObjectPropertyAddress address = deviceListAddress();
  AudioObjectID ids[64] = {};
  UInt32 size = sizeof ids;
  const OSStatus status =
      AudioObjectGetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, &size, ids);
  if (status == noErr && size != 0) listedLast = ids[size / sizeof ids[0] - 1];
  return status;
}

OSStatus prefetch() {
  const AudioObjectPropertyAddress address{kTolvanePropertyPrefetch, kAudioObjectPropertyScopeGlobal,
                                           kAudioObjectPropertyElementMain};
  const UInt32 begin = 1;
  return AudioObjectSetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, sizeof begin, &begin);
}

OSStatus listen() {
  const AudioObjectPropertyAddress address = deviceListAddress();
  const auto hear = [](AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) -> OSStatus {
    return noErr;
  };
  return AudioObjectAddPropertyListener(kAudioObjectSystemObject, &address, hear, nullptr);
}

OSStatus silence(AudioObjectID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
                 AudioBufferList*, const AudioTimeStamp*, void*) {
  return noErr;
}

}  // namespace

int main(int argc, char** argv) {
  if (!becomeNobodyElse()) return 1;
  allowThreads(argc > 1 ? static_cast<rlim_t>(std::atoi(argv[1])) : 1);
  report("prefetch", prefetch());
  report("list", list());
  report("listen", listen());
  allowThreads(kPlenty);
  report("list", list());
  AudioDeviceIOProcID proc = nullptr;
  if (AudioDeviceCreateIOProcID(listedLast, silence, nullptr, &proc) != noErr) return 1;
  const UInt32 frames = 256;
  const AudioObjectPropertyAddress cycle{kAudioDevicePropertyBufferFrameSize, kAudioObjectPropertyScopeGlobal,
                                         kAudioObjectPropertyElementMain};
  allowThreads(1);
  report("start", AudioDeviceStart(listedLast, proc));
  report("set", AudioObjectSetPropertyData(listedLast, &cycle, 0, nullptr, sizeof frames, &frames));
  allowThreads(kPlenty);
  report("start", AudioDeviceStart(listedLast, proc));
  allowThreads(1);
  report("stop", AudioDeviceStop(listedLast, proc));
  report("list", list());
  std::puts("end");
  return 0;
}
