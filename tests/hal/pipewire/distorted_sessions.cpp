// pipewire_distorted_sessions SESSIONS FIRST_SEED [AT_ONCE]: sessions with a PipeWire server whose messages
// are distorted on their way: numbers, counts, sizes, names, descriptors. Each session is a process with a
// seed of its own. It lists the devices, reads them, runs those of the server, and runs the virtual device
// all the time. Then the server is honest again, and its card must be listed as it is, and run.
//
// A session fails if it crashes, hangs, loses the virtual device, or does not find the card at the end. Exits
// with status 1 if any failed, and names its seed. Crashes of PipeWire's client library without any of our
// code on the stack are counted apart: the library maps and uses the memory that the server names by itself.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "hal/core_audio.h"
#include "support/eventually.h"
#include "support/pipewire_proxy.h"
#include "support/pipewire_server.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

const PipeWireCard kCard{.name = "card", .inputs = 4, .outputs = 4, .cardId = 900};
const PipeWireCard kOther{.name = "other", .inputs = 0, .outputs = 2, .cardId = 901};
constexpr auto kVirtualName = "Tolvane Virtual Device";
constexpr auto kHangs = 120s;  // for a session, most of which lasts a few seconds
constexpr auto kCall = 20s;    // for one call of the HAL on a busy machine; the promise is one or two

constexpr int kCrashOfTheLibrary = 77;
constexpr int kEndedForItsTime = 78;

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "failed: %s\n", what.c_str());
  std::fflush(stderr);
  std::abort();
}

/// Calls `action`, and fails if it takes too long.
template <class Action>
auto inTime(const char* what, const Action& action) {
  const auto begin = Clock::now();
  auto result = action();
  if (Clock::now() - begin > kCall) fail(std::string(what) + " took too long");
  return result;
}

/// A property's bytes; empty on an error.
std::vector<std::byte> bytesOf(AudioObjectID object, const AudioObjectPropertyAddress& address) {
  UInt32 size = 0;
  if (AudioObjectGetPropertyDataSize(object, &address, 0, nullptr, &size) != noErr) return {};
  size += 64;  // it may have grown meanwhile
  std::vector<std::byte> bytes(size);
  if (AudioObjectGetPropertyData(object, &address, 0, nullptr, &size, bytes.data()) != noErr) return {};
  bytes.resize(size);
  return bytes;
}

std::string textOf(AudioObjectID object, const AudioObjectPropertyAddress& address) {
  const std::vector<std::byte> bytes = bytesOf(object, address);
  CFStringRef string = nullptr;
  if (bytes.size() != sizeof string) return {};
  std::memcpy(&string, bytes.data(), sizeof string);
  char text[4096] = "";
  CFStringGetCString(string, text, sizeof text, kCFStringEncodingUTF8);
  CFRelease(string);
  return text;
}

std::vector<AudioObjectID> devices() {
  const auto bytes = inTime("the list", [] {
    return bytesOf(kAudioObjectSystemObject,
                   {kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal, 0});
  });
  std::vector<AudioObjectID> ids(bytes.size() / sizeof(AudioObjectID));
  std::memcpy(ids.data(), bytes.data(), ids.size() * sizeof(AudioObjectID));
  return ids;
}

std::string nameOf(AudioObjectID device) {
  return textOf(device, {kAudioObjectPropertyName, kAudioObjectPropertyScopeGlobal, 0});
}

/// The channels of the device's streams.
std::uint64_t channelsOf(AudioObjectID device, AudioObjectPropertyScope scope) {
  const std::vector<std::byte> bytes = bytesOf(device, {kAudioDevicePropertyStreamConfiguration, scope, 0});
  if (bytes.size() < sizeof(UInt32)) return 0;
  const auto* const list = reinterpret_cast<const AudioBufferList*>(bytes.data());
  std::uint64_t channels = 0;
  for (UInt32 b = 0; b < list->mNumberBuffers; ++b) channels += list->mBuffers[b].mNumberChannels;
  return channels;
}

AudioObjectID deviceNamed(const std::vector<AudioObjectID>& devices, const std::string& name) {
  const auto found =
      std::find_if(devices.begin(), devices.end(), [&](auto id) { return nameOf(id) == name; });
  return found == devices.end() ? AudioObjectID{kAudioObjectUnknown} : *found;
}

/// Reads what a program may ask of a device.
void readAll(AudioObjectID device) {
  for (const AudioObjectPropertySelector selector : {kAudioObjectPropertyName, kAudioDevicePropertyDeviceUID})
    textOf(device, {selector, kAudioObjectPropertyScopeGlobal, 0});
  for (const AudioObjectPropertySelector selector :
       {kAudioDevicePropertyNominalSampleRate, kAudioDevicePropertyBufferFrameSize,
        kAudioDevicePropertyBufferFrameSizeRange, kAudioDevicePropertyTransportType})
    bytesOf(device, {selector, kAudioObjectPropertyScopeGlobal, 0});
  for (const auto scope : {kAudioObjectPropertyScopeInput, kAudioObjectPropertyScopeOutput}) {
    const auto channels = static_cast<UInt32>(std::min<std::uint64_t>(channelsOf(device, scope), 64));
    for (UInt32 channel = 1; channel <= channels; ++channel)
      textOf(device, {kAudioObjectPropertyElementName, scope, channel});
  }
}

/// A callback on a device, which copies its first input to its outputs and counts the cycles.
class Running {
 public:
  explicit Running(AudioObjectID device) : device_(device) {
    if (AudioDeviceCreateIOProcID(device, &Running::call, this, &id_) != noErr) id_ = nullptr;
    isStarted_ = id_ != nullptr && inTime("a start", [&] { return AudioDeviceStart(device_, id_); }) == noErr;
  }
  ~Running() {
    if (id_ == nullptr) return;
    inTime("a stop", [&] { return AudioDeviceStop(device_, id_); });
    AudioDeviceDestroyIOProcID(device_, id_);
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  [[nodiscard]] bool isStarted() const { return isStarted_; }

  [[nodiscard]] bool goesOn(std::chrono::milliseconds limit) const {
    const std::uint64_t before = cycles_;
    return eventually(limit, [&] { return cycles_ > before + 1; });
  }

 private:
  static OSStatus call(AudioObjectID, const AudioTimeStamp*, const AudioBufferList* input,
                       const AudioTimeStamp*, AudioBufferList* output, const AudioTimeStamp*, void* self) {
    copy(input, output);
    ++static_cast<Running*>(self)->cycles_;
    return noErr;
  }

  /// Touches every byte that the lists state.
  static void copy(const AudioBufferList* input, AudioBufferList* output) {
    float sum = 0.0F;
    for (UInt32 b = 0; b < input->mNumberBuffers; ++b) {
      const auto* const samples = static_cast<const float*>(input->mBuffers[b].mData);
      for (UInt32 i = 0; samples != nullptr && i < input->mBuffers[b].mDataByteSize / sizeof(float); ++i)
        sum += samples[i];
    }
    for (UInt32 b = 0; b < output->mNumberBuffers; ++b) {
      auto* const samples = static_cast<float*>(output->mBuffers[b].mData);
      for (UInt32 i = 0; samples != nullptr && i < output->mBuffers[b].mDataByteSize / sizeof(float); ++i)
        samples[i] = sum;
    }
  }

  AudioObjectID device_;
  AudioDeviceIOProcID id_ = nullptr;
  bool isStarted_ = false;
  std::atomic<std::uint64_t> cycles_ = 0;
};

/// The distorted part: lists and runs what seems to be there.
void useWhatIsThere(AudioObjectID virtualDevice) {
  for (int round = 0; round < 2; ++round) {
    std::vector<AudioObjectID> listed;
    // A list leaves out every driver that does not answer in time, on a busy machine any.
    const bool isThere = eventually(20s, [&] {
      listed = devices();
      return std::find(listed.begin(), listed.end(), virtualDevice) != listed.end();
    });
    if (!isThere) fail("the virtual device has gone");
    for (const AudioObjectID device : listed) readAll(device);
    for (const AudioObjectID device : listed) {
      if (device == virtualDevice) continue;
      const Running running(device);
      if (running.isStarted()) static_cast<void>(running.goesOn(40ms));
    }
  }
}

std::string listText() {
  std::string text;
  for (const AudioObjectID device : devices()) {
    text += " \"" + nameOf(device) + "\" " +
            std::to_string(channelsOf(device, kAudioObjectPropertyScopeInput)) + " in " +
            std::to_string(channelsOf(device, kAudioObjectPropertyScopeOutput)) + " out";
  }
  return text;
}

/// The honest part: the card as it is, running.
void expectTheCard() {
  AudioObjectID card = kAudioObjectUnknown;
  const bool isAsItIs = eventually(40s, [&] {
    const std::vector<AudioObjectID> listed = devices();
    card = deviceNamed(listed, kCard.name);
    return card != kAudioObjectUnknown && deviceNamed(listed, kOther.name) != kAudioObjectUnknown &&
           channelsOf(card, kAudioObjectPropertyScopeInput) == kCard.inputs &&
           channelsOf(card, kAudioObjectPropertyScopeOutput) == kCard.outputs;
  });
  if (!isAsItIs) fail("the card is not listed as it is again, but" + listText());
  const bool isHeard = eventually(20s, [&] {
    const Running running(card);
    return running.isStarted() && running.goesOn(5s);
  });
  if (!isHeard) fail("the card does not run again");
}

void session(std::uint64_t seed) {
  PipeWireProxy proxy;
  // From a few changed messages in a session to nearly all.
  constexpr unsigned kRarities[] = {300, 100, 40, 15, 5, 2};
  proxy.distort(seed, kRarities[seed % std::size(kRarities)]);
  AudioObjectID virtualDevice = kAudioObjectUnknown;
  const bool isThere = eventually(20s, [&] {
    virtualDevice = deviceNamed(devices(), kVirtualName);
    return virtualDevice != kAudioObjectUnknown;
  });
  if (!isThere) fail("the virtual device is missing");
  const Running reference(virtualDevice);
  useWhatIsThere(virtualDevice);
  if (!reference.goesOn(20s)) fail("the virtual device stands still");
  proxy.endDistortion();
  expectTheCard();
  if (!reference.goesOn(20s)) fail("the virtual device stands still");
}

/// True if none of our code is among the frames: the library crashes by itself. The first two are the handler
/// and what called it.
bool isAllOfTheLibrary(void* const* frames, int count) {
  Dl_info ours{};
  ::dladdr(reinterpret_cast<void*>(&isAllOfTheLibrary), &ours);
  return std::none_of(frames + 2, frames + count, [&](void* frame) {
    Dl_info info{};
    return ::dladdr(frame, &info) != 0 && info.dli_fbase == ours.dli_fbase;
  });
}

/// Prints where a session crashes, and ends it.
void sayWhere(int signalNumber) {
  void* frames[64];
  const int count = ::backtrace(frames, std::size(frames));
  ::backtrace_symbols_fd(frames, count, STDERR_FILENO);
  if (signalNumber != SIGABRT && signalNumber != SIGALRM && isAllOfTheLibrary(frames, count))
    ::_exit(kCrashOfTheLibrary);
  ::signal(signalNumber, SIG_DFL);
  ::raise(signalNumber);
}

[[noreturn]] void runSession(std::uint64_t seed, const std::string& log) {
  const int to = ::open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  ::dup2(to, STDOUT_FILENO);
  ::dup2(to, STDERR_FILENO);
  for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL, SIGALRM}) ::signal(number, sayWhere);
  ::alarm(kHangs.count());
  // Like RealtimeKit's: a real-time thread that never sleeps must not take the processor from other sessions.
  const rlimit longest{2'000'000, 4'000'000};
  ::setrlimit(RLIMIT_RTTIME, &longest);
  ::signal(SIGXCPU, [](int) { ::_exit(kEndedForItsTime); });
  session(seed);
  ::_exit(0);
}

/// The end of what the session has written.
void print(const std::string& file) {
  std::deque<std::string> lines;
  std::ifstream from(file);
  for (std::string line; std::getline(from, line); lines.push_back(line)) {
    if (lines.size() == 60) lines.pop_front();
  }
  for (const std::string& line : lines) std::printf("    %s\n", line.c_str());
}

/// What became of some sessions.
struct Tally {
  unsigned failed = 0;
  unsigned crashedInLibrary = 0;
  unsigned neverSlept = 0;
};

/// Runs every `step`-th seed, on a server of its own.
Tally runSeeds(std::uint64_t first, std::uint64_t end, std::uint64_t step) {
  const PipeWireServer server({kCard, kOther});
  ::setenv("PIPEWIRE_DEBUG", "0", 0);  // the sessions' clients complain about each lie
  const std::string log = std::string(std::getenv("XDG_RUNTIME_DIR")) + "/session.log";
  Tally tally;
  for (std::uint64_t seed = first; seed < end; seed += step) {
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("no process for a session");
    if (child == 0) runSession(seed, log);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (status == 0) continue;
    if (WIFEXITED(status) && WEXITSTATUS(status) == kCrashOfTheLibrary) {
      ++tally.crashedInLibrary;
      continue;
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == kEndedForItsTime) {
      ++tally.neverSlept;
      continue;
    }
    ++tally.failed;
    std::printf("seed %llu: %s %d\n", static_cast<unsigned long long>(seed),
                WIFSIGNALED(status) ? "signal" : "status",
                WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
    print(log);
    std::fflush(stdout);
  }
  return tally;
}

int runAll(std::uint64_t sessions, std::uint64_t first, std::uint64_t atOnce) {
  int results[2] = {-1, -1};
  if (::pipe2(results, O_CLOEXEC) != 0) throw std::runtime_error("no pipe for the results");
  for (std::uint64_t worker = 0; worker < atOnce; ++worker) {
    if (::fork() != 0) continue;
    const Tally tally = runSeeds(first + worker, first + sessions, atOnce);
    ::_exit(::write(results[1], &tally, sizeof tally) == sizeof tally ? 0 : 1);
  }
  ::close(results[1]);
  Tally all;
  std::uint64_t reports = 0;
  for (Tally one; ::read(results[0], &one, sizeof one) == sizeof one; ++reports) {
    all.failed += one.failed;
    all.crashedInLibrary += one.crashedInLibrary;
    all.neverSlept += one.neverSlept;
  }
  while (::wait(nullptr) > 0) {
  }
  std::printf(
      "%llu sessions from seed %llu: %u failed; in %u the client library crashed by itself, in %u its thread "
      "never slept\n",
      static_cast<unsigned long long>(sessions), static_cast<unsigned long long>(first), all.failed,
      all.crashedInLibrary, all.neverSlept);
  return all.failed == 0 && reports == atOnce ? 0 : 1;
}

}  // namespace
}  // namespace tolvane::test

/// Replaces the system's: the library blocks all signals in its data thread, and a crash there could not be
/// told from one of ours.
extern "C" int pthread_sigmask(int how, const sigset_t* set, sigset_t* old) {
  using Function = int (*)(int, const sigset_t*, sigset_t*);
  static const auto system = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "pthread_sigmask"));
  if (set == nullptr || how == SIG_UNBLOCK) return system(how, set, old);
  sigset_t blocked = *set;
  for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL}) sigdelset(&blocked, number);
  return system(how, &blocked, old);
}

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::fputs("usage: pipewire_distorted_sessions SESSIONS FIRST_SEED [AT_ONCE]\n", stderr);
    return 2;
  }
  const std::uint64_t atOnce = argc == 4 ? std::strtoull(argv[3], nullptr, 10) : 2;
  return tolvane::test::runAll(std::strtoull(argv[1], nullptr, 10), std::strtoull(argv[2], nullptr, 10),
                               atOnce);
}
