// Ends a test program whose real-time thread does not sleep for half a second (SIGXCPU), and likewise the
// programs that it starts. Such a thread would keep all ordinary programs from its processor, so that other
// tests would fail in its place.
#include <algorithm>

#include <sys/resource.h>

namespace {

[[gnu::constructor]] void limitRealtimeThreads() {
  constexpr rlim_t kLongestUs = 500'000;
  rlimit limit{};
  if (::getrlimit(RLIMIT_RTTIME, &limit) != 0) return;
  limit.rlim_cur = std::min(limit.rlim_cur, kLongestUs);
  ::setrlimit(RLIMIT_RTTIME, &limit);
}

}  // namespace
