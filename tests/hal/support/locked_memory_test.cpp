// Memory is locked within the user's limit, and used unlocked beyond it.
#include "hal/support/locked_memory.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tolvane::hal {
namespace {

/// The locked memory of this process, in KiB.
long lockedKib() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word != "VmLck:") continue;
    long kib = -1;
    status >> kib;
    return kib;
  }
  return -1;
}

/// An ordinary user without the right to lock memory, for the lifetime of the object.
class WithoutTheRight {
 public:
  WithoutTheRight() {
    getrlimit(RLIMIT_MEMLOCK, &before_);
    const rlimit none{0, before_.rlim_max};
    setrlimit(RLIMIT_MEMLOCK, &none);
    EXPECT_EQ(isRoot_ ? seteuid(65534) : 0, 0);
  }
  WithoutTheRight(const WithoutTheRight&) = delete;
  WithoutTheRight& operator=(const WithoutTheRight&) = delete;
  ~WithoutTheRight() {
    EXPECT_EQ(isRoot_ ? seteuid(0) : 0, 0);
    setrlimit(RLIMIT_MEMLOCK, &before_);
  }

 private:
  const bool isRoot_ = geteuid() == 0;
  rlimit before_{};
};

TEST(LockedMemory, SamplesAreSilentWholePagesAndUnlockedAtTheEnd) {
  const long before = lockedKib();
  {
    const SamplePages pages(100'000);
    EXPECT_TRUE(pages.areLocked());
    EXPECT_EQ(lockedKib(), before + 100);
    EXPECT_TRUE(std::all_of(pages.get(), pages.get() + 25'000, [](float sample) { return sample == 0.0F; }));
    pages.get()[24'999] = 1.0F;
  }
  EXPECT_EQ(lockedKib(), before);
}

TEST(LockedMemory, NoSamplesAreAPage) {
  const SamplePages pages(0);
  EXPECT_NE(pages.get(), nullptr);
}

TEST(LockedMemory, TheStackIsLockedWhileTheThreadRuns) {
  const long before = lockedKib();
  std::thread([before] {
    const std::optional<LockedStack> stack(std::in_place);
    EXPECT_TRUE(stack->isLocked());
    EXPECT_GE(lockedKib(), before + 60);
    EXPECT_LE(lockedKib(), before + 64);
  }).join();
  EXPECT_EQ(lockedKib(), before);
}

TEST(LockedMemory, OfTheFirstThreadIsLockedToo) {
  EXPECT_TRUE(LockedStack().isLocked());
}

TEST(LockedMemory, WithoutTheRightItIsUsedAllTheSame) {
  const WithoutTheRight user;
  const SamplePages pages(100'000);
  EXPECT_FALSE(pages.areLocked());
  pages.get()[24'999] = 1.0F;
  EXPECT_FALSE(LockedStack().isLocked());
}

}  // namespace
}  // namespace tolvane::hal
