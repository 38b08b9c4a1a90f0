#include "realtime/io_path_watch.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "support/eventually.h"

namespace tolvane::test {

namespace {

std::atomic<IoPathWatch*> currentWatch{nullptr};

constexpr std::uint64_t kWarmUpCycles = 10;
constexpr std::size_t kPageBytes = 4096;

struct Misdeed {
  void (*act)();
  const char* trace;  // in the report
};

void* volatile escapedBlock = nullptr;
char* freshPage = nullptr;

void allocate() {
  escapedBlock = std::malloc(1);  // NOLINT(cppcoreguidelines-no-malloc)
  std::free(escapedBlock);        // NOLINT(cppcoreguidelines-no-malloc)
}

void lock() {
  static std::mutex mutex;
  const std::lock_guard held(mutex);
}

void block() {
  const timespec moment{0, 1};
  ::nanosleep(&moment, nullptr);
}

void enterTheSystem() {
#if defined(__x86_64__)
  long result = SYS_getppid;
  asm volatile("syscall" : "+a"(result) : : "rcx", "r11", "memory");
#else
  ::syscall(SYS_getppid);
#endif
}

void touchAFreshPage() {
  *freshPage = 1;
}

#if defined(__x86_64__)
constexpr const char* kSystemCallTrace = "system calls: 1 (first: 110)";
#else
constexpr const char* kSystemCallTrace = "blocking calls: 1 (first: syscall)";
#endif

}  // namespace

IoPathWatch::IoPathWatch(Part part, const AllowedCall* allowed, AudioDeviceIOProc routing)
    : part_(part), allowed_(allowed), routing_(routing) {
  currentWatch = this;
}

IoPathWatch::~IoPathWatch() {
  currentWatch = nullptr;
}

IoPathWatch* IoPathWatch::current() noexcept {
  return currentWatch;
}

bool IoPathWatch::finish() {
  isEnding_ = true;
  return eventually([this] { return isOver_.load(); });
}

void IoPathWatch::begin() noexcept {
  if (isOver_) return;
  if (isEnding_) {
    isOver_ = true;
    return;
  }
  watch_.emplace(allowed_);
}

void IoPathWatch::end() noexcept {
  if (!watch_) return;
  const RealtimeReport report = watch_->report();
  watch_.reset();
  if (calledBack_) judge(report);
  calledBack_ = false;
}

void IoPathWatch::enter() noexcept {
  if (part_ == Part::libraryCallback) begin();
}

void IoPathWatch::leave() noexcept {
  if (part_ == Part::libraryCallback) end();
}

void IoPathWatch::judge(const RealtimeReport& report) noexcept {
  const std::uint64_t cycle = cycles_++;
  const bool isQuiet = cycle == 0 || (report.blockingCalls == 0 && report.systemCalls == 0);
  const bool isInMemory = cycle < kWarmUpCycles || report.pageFaults == 0;
  if (report.allocations == 2 && report.frees == 2 && isQuiet && isInMemory) return;
  std::snprintf(lastWrong_, sizeof lastWrong_,
                "cycle %llu: allocations: %d, frees: %d, blocking calls: %d (first: %s), system calls: %d "
                "(first: %ld), page faults: %d",
                static_cast<unsigned long long>(cycle), report.allocations, report.frees,
                report.blockingCalls, report.firstBlockingCall != nullptr ? report.firstBlockingCall : "none",
                report.systemCalls, report.firstSystemCall, report.pageFaults);
  ++wrong_;
}

OSStatus IoPathWatch::callback(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* input,
                               const AudioTimeStamp* inputTime, AudioBufferList* output,
                               const AudioTimeStamp* outputTime, void* clientData) noexcept {
  if (part_ == Part::wholeThread) {
    end();
    begin();
  }
  calledBack_ = true;
  if (watch_) {
    if (void (*const misdeed)() = planted_.exchange(nullptr); misdeed != nullptr) misdeed();
  }
  return routing_(device, now, input, inputTime, output, outputTime, clientData);
}

OSStatus watchedIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* input,
                       const AudioTimeStamp* inputTime, AudioBufferList* output,
                       const AudioTimeStamp* outputTime, void* clientData) noexcept {
  return IoPathWatch::current()->callback(device, now, input, inputTime, output, outputTime, clientData);
}

void expectRightCycles(IoPathWatch& watch, std::uint64_t cycles) {
  // However long a loaded machine takes: only a device that stands still has failed.
  while (watch.cycles() < cycles && watch.wrong() == 0) {
    const std::uint64_t before = watch.cycles();
    if (!eventually([&] { return watch.cycles() != before; })) {
      ADD_FAILURE() << "no cycle after " << before;
      break;
    }
  }
  EXPECT_TRUE(watch.finish());
  EXPECT_EQ(watch.wrong(), 0U) << watch.lastWrong();
  std::printf("%llu cycles, %llu wrong\n", static_cast<unsigned long long>(watch.cycles()),
              static_cast<unsigned long long>(watch.wrong()));
  std::fflush(stdout);
}

void expectEachMisdeedIsSeen(IoPathWatch& watch) {
  freshPage = static_cast<char*>(
      ::mmap(nullptr, kPageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  EXPECT_TRUE(eventually([&] { return watch.cycles() > 2 * kWarmUpCycles; }));
  std::uint64_t wrong = 0;
  for (const auto& [act, trace] : {Misdeed{&allocate, "allocations: 3, frees: 3,"},
                                   {&lock, "blocking calls: 1 (first: pthread_mutex_lock)"},
                                   {&block, "blocking calls: 1 (first: nanosleep)"},
                                   {&enterTheSystem, kSystemCallTrace},
                                   {&touchAFreshPage, "page faults: 1"}}) {
    EXPECT_EQ(watch.wrong(), wrong) << watch.lastWrong();
    watch.plant(act);
    EXPECT_TRUE(eventually([&] { return watch.wrong() > wrong; })) << trace;
    EXPECT_NE(watch.lastWrong().find(trace), std::string::npos) << watch.lastWrong();
    wrong = watch.wrong();
  }
  EXPECT_EQ(wrong, 5U);
  EXPECT_TRUE(watch.finish());
  ::munmap(freshPage, kPageBytes);
}

}  // namespace tolvane::test
