// Preloaded into a program: its calendar clock jumps ten years at every reading, forth and back. The clock
// that measures durations stays right.
#include <atomic>
#include <ctime>

#include <dlfcn.h>
#include <sys/time.h>

namespace {

constexpr time_t kJumpSeconds = 10 * 365 * 86'400;

/// To add to this reading.
time_t jump() {
  static std::atomic<unsigned> readings = 0;
  return ++readings % 2 == 0 ? kJumpSeconds : -kJumpSeconds;
}

bool isCalendar(clockid_t clock) {
  return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* now) noexcept {
  using Function = int (*)(clockid_t, timespec*);
  static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "clock_gettime"));
  const int result = next(clock, now);
  if (result == 0 && isCalendar(clock)) now->tv_sec += jump();
  return result;
}

int gettimeofday(timeval* now, void* /*zone*/) noexcept {
  timespec precise{};
  const int result = clock_gettime(CLOCK_REALTIME, &precise);
  *now = {precise.tv_sec, precise.tv_nsec / 1000};
  return result;
}

time_t time(time_t* where) noexcept {
  timespec precise{};
  clock_gettime(CLOCK_REALTIME, &precise);
  if (where != nullptr) *where = precise.tv_sec;
  return precise.tv_sec;
}

}  // extern "C"
