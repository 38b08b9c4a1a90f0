// What the callback may do on the device's thread: two allocations, two releases, nothing that blocks. And
// that the watch which says so would see it if it did more.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#include <sys/syscall.h>
#include <unistd.h>

#include "routing_fixture.h"
#include "support/realtime_watch.h"

namespace tolvane::test {
namespace {

class RealtimeTest : public RoutingTest {
 protected:
  RealtimeTest() {
    input_.add(2, 512, 0.5F).add(16, 512, 0.5F);
    for (int i = 0; i < 20; ++i) output_.add(1, 512);
    context_ = initialContext(18, 20);
    publishRoutes(64);
    // The first cycle of the process writes its trace, and the lazy linking of what is called is done.
    call(&halIOProc);
  }

  void publishRoutes(std::int64_t count) {
    std::vector<PatchConnection> routes(static_cast<std::size_t>(count));
    for (std::int64_t i = 0; i < count; ++i) {
      routes[static_cast<std::size_t>(i)] = {i % 18, i % 20, i % 3 == 0 ? 1.0F : 0.5F, true};
    }
    publish(routes);
  }

  OSStatus call(AudioDeviceIOProc proc) {
    const AudioTimeStamp time{};
    return proc(1, &time, input_.get(), &time, output_.get(), &time, &context_);
  }

  RealtimeReport watch(AudioDeviceIOProc proc) {
    RealtimeWatch watch;
    call(proc);
    return watch.report();
  }
};

/// halIOProc and something that a callback must not do.
template <auto misdeed>
OSStatus routeAnd(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                  const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                  const AudioTimeStamp* outputTime, void* clientData) {
  misdeed();
  return halIOProc(device, now, inputData, inputTime, outputData, outputTime, clientData);
}

// Where the compiler cannot follow, so that it leaves out no allocation.
void* volatile escaped = nullptr;

TEST_F(RealtimeTest, AllocatesExactlyTwiceAndFreesExactlyTwice) {
  for (const std::int64_t routes : {64, 1, 0}) {
    publishRoutes(routes);
    for (int cycle = 0; cycle < 100; ++cycle) {
      const RealtimeReport report = watch(&halIOProc);
      EXPECT_EQ(report.allocations, 2);
      EXPECT_EQ(report.frees, 2);
    }
  }
}

TEST_F(RealtimeTest, AllocatesNothingWhenThereIsNothingToRoute) {
  context_.inputChannelCount = 0;
  const RealtimeReport report = watch(&halIOProc);
  EXPECT_EQ(report.allocations, 0);
  EXPECT_EQ(report.frees, 0);
}

TEST_F(RealtimeTest, FreesBothTablesOnEveryEarlyReturn) {
  for (const UInt32 bytes : {0U, 3U}) {
    output_.buffer(0).mDataByteSize = bytes;
    const RealtimeReport report = watch(&halIOProc);
    EXPECT_EQ(report.allocations, 2);
    EXPECT_EQ(report.frees, 2);
  }
}

TEST_F(RealtimeTest, CallsNothingThatBlocks) {
  if (!watchesBlockingCalls()) GTEST_SKIP() << "a sanitized build sees allocations only";
  for (int cycle = 0; cycle < 100; ++cycle) {
    const RealtimeReport report = watch(&halIOProc);
    EXPECT_EQ(report.blockingCalls, 0) << report.firstBlockingCall;
  }
}

TEST_F(RealtimeTest, WatchSeesAThirdAllocation) {
  const RealtimeReport report = watch(&routeAnd<[] {
    escaped = std::malloc(1);  // NOLINT(cppcoreguidelines-no-malloc)
    std::free(escaped);        // NOLINT(cppcoreguidelines-no-malloc)
  }>);
  EXPECT_EQ(report.allocations, 3);
  EXPECT_EQ(report.frees, 3);
}

TEST_F(RealtimeTest, WatchSeesAllocationByTheLanguage) {
  const RealtimeReport report = watch(&routeAnd<[] {
    escaped = new int(1);
    delete static_cast<int*>(escaped);
  }>);
  EXPECT_EQ(report.allocations, 3);
  EXPECT_EQ(report.frees, 3);
}

TEST_F(RealtimeTest, WatchSeesALock) {
  if (!watchesBlockingCalls()) GTEST_SKIP() << "a sanitized build sees allocations only";
  static std::mutex mutex;
  const RealtimeReport report = watch(&routeAnd<[] { const std::lock_guard lock(mutex); }>);
  EXPECT_EQ(report.blockingCalls, 1);
  EXPECT_STREQ(report.firstBlockingCall, "pthread_mutex_lock");
}

TEST_F(RealtimeTest, WatchSeesASleep) {
  if (!watchesBlockingCalls()) GTEST_SKIP() << "a sanitized build sees allocations only";
  const RealtimeReport report =
      watch(&routeAnd<[] { std::this_thread::sleep_for(std::chrono::nanoseconds(1)); }>);
  EXPECT_EQ(report.blockingCalls, 1);
  EXPECT_NE(report.firstBlockingCall, nullptr);
}

TEST_F(RealtimeTest, WatchSeesAFutex) {
  if (!watchesBlockingCalls()) GTEST_SKIP() << "a sanitized build sees allocations only";
  static std::atomic<int> word = 1;
  const RealtimeReport report = watch(&routeAnd<[] {
    word.wait(0);
    word.notify_one();
  }>);
  EXPECT_EQ(report.blockingCalls, 0) << "an atomic that is not waited on makes no call";
  const RealtimeReport direct =
      watch(&routeAnd<[] { ::syscall(SYS_futex, &word, 129, 1, nullptr, nullptr, 0); }>);
  EXPECT_EQ(direct.blockingCalls, 1);
  EXPECT_STREQ(direct.firstBlockingCall, "syscall");
}

TEST_F(RealtimeTest, WatchSeesAWrite) {
  if (!watchesBlockingCalls()) GTEST_SKIP() << "a sanitized build sees allocations only";
  const RealtimeReport report =
      watch(&routeAnd<[] { [[maybe_unused]] const auto written = ::write(STDERR_FILENO, "", 0); }>);
  EXPECT_EQ(report.blockingCalls, 1);
  EXPECT_STREQ(report.firstBlockingCall, "write");
}

TEST_F(RealtimeTest, WatchIsOfItsOwnThread) {
  RealtimeWatch watch;
  std::atomic<int> step = 0;
  std::thread other([&step] {
    while (step.load() == 0) std::this_thread::yield();
    escaped = new int(1);
    delete static_cast<int*>(escaped);
  });
  const RealtimeReport before = watch.report();
  step = 1;
  other.join();
  RealtimeWatch again;
  call(&halIOProc);
  EXPECT_EQ(again.report().allocations, 2);
  EXPECT_GE(before.allocations, 1) << "starting a thread allocates, on this one";
}

}  // namespace
}  // namespace tolvane::test
