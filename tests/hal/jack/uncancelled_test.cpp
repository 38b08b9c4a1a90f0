// Callbacks on a thread that is cancelled asynchronously, as libjack cancels its own.
#include "hal/jack/uncancelled.h"

#include <atomic>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

namespace tolvane::test {
namespace {

struct Call {
  std::atomic<bool> hasBegun{false};
  std::atomic<bool> mayEnd{false};
  std::atomic<bool> hasEnded{false};
  std::atomic<bool> isPast{false};  // the thread lives on after the callback
};

/// Stays in noexcept code until it may end, without any function at which a thread could be cancelled.
void stay(Call& call) noexcept {
  call.hasBegun = true;
  while (!call.mayEnd) {
  }
  call.hasEnded = true;
}

constexpr auto kStay = hal::uncancelled([](void* argument) { stay(*static_cast<Call*>(argument)); });

void* callAsynchronously(void* argument) {
  pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
  kStay(argument);
  static_cast<Call*>(argument)->isPast = true;
  return nullptr;
}

TEST(UncancelledCallback, EndsBeforeItsThreadDoes) {
  for (int time = 0; time < 200; ++time) {
    Call call;
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, nullptr, callAsynchronously, &call), 0);
    while (!call.hasBegun) sched_yield();
    pthread_cancel(thread);
    call.mayEnd = true;
    pthread_join(thread, nullptr);
    EXPECT_TRUE(call.hasEnded);
    EXPECT_FALSE(call.isPast);
  }
}

TEST(UncancelledCallback, PassesArgumentsAndResultOn) {
  constexpr auto kAdd = hal::uncancelled([](int left, const int* right) { return left + *right; });
  const int two = 2;
  EXPECT_EQ(kAdd(40, &two), 42);
}

}  // namespace
}  // namespace tolvane::test
