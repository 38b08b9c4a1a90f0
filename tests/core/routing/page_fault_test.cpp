// The callback causes no page fault once the process has warmed up. The other test shows that the watch sees
// one.
#include <sys/mman.h>

#include "realtime_fixture.h"

namespace tolvane::test {
namespace {

using PageFaultTest = RealtimeTest;

TEST_F(PageFaultTest, CausesNoPageFaultAfterTheTenthCycle) {
  for (int cycle = 0; cycle < 110; ++cycle) {
    const RealtimeReport report = watch(&halIOProc);
    EXPECT_TRUE(cycle < 10 || report.pageFaults == 0) << cycle;
  }
}

TEST_F(PageFaultTest, WatchSeesAPageFault) {
  static char* page = nullptr;
  constexpr std::size_t kBytes = 4096;
  page =
      static_cast<char*>(::mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  watch(&halIOProc);
  EXPECT_EQ(watch(&routeAnd<[] { *page = 1; }>).pageFaults, 1);
  EXPECT_EQ(watch(&routeAnd<[] { *page = 2; }>).pageFaults, 0);
  ::munmap(page, kBytes);
}

}  // namespace
}  // namespace tolvane::test
