// The watch in plain builds. The program defines these functions itself, and its definitions take precedence
// over the C library's for every library that it loads.
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/realtime_watch.h"

namespace tolvane::test {}  // namespace tolvane::test

using tolvane::test::noteAllocation;
using tolvane::test::noteBlockingCall;
using tolvane::test::noteFree;

// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming): the C library's names
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) noexcept {
  noteAllocation();
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
  noteAllocation();
  return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept {
  noteAllocation();
  if (block != nullptr) noteFree();
  return __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  noteAllocation();
  return __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
  noteAllocation();
  *block = __libc_memalign(alignment, size);
  return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) noexcept {
  if (block != nullptr) noteFree();
  __libc_free(block);
}

}  // extern "C"

namespace {

/// The C library's function of this name, kept in `known`. A static with an initialiser would not do: threads
/// that come while it is initialised wait for it through the very functions that are defined here.
template <class Function>
Function nextOf(std::atomic<Function>& known, const char* name) noexcept {
  Function next = known.load(std::memory_order_relaxed);
  if (next == nullptr) {
    next = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
    known.store(next, std::memory_order_relaxed);
  }
  return next;
}

}  // namespace

// Defines a function that notes its own name and calls the C library's version.
#define PASS_ON(result, name, parameters, arguments, ...)  \
  extern "C" result name parameters __VA_ARGS__ {          \
    noteBlockingCall(#name);                               \
    using Function = result(*) parameters;                 \
    static constinit std::atomic<Function> known{nullptr}; \
    return nextOf(known, #name) arguments;                 \
  }

PASS_ON(int, pthread_mutex_lock, (pthread_mutex_t * mutex), (mutex), noexcept)
PASS_ON(int, pthread_mutex_trylock, (pthread_mutex_t * mutex), (mutex), noexcept)
PASS_ON(int, pthread_mutex_timedlock, (pthread_mutex_t * mutex, const timespec* until), (mutex, until),
        noexcept)
PASS_ON(int, pthread_rwlock_rdlock, (pthread_rwlock_t * lock), (lock), noexcept)
PASS_ON(int, pthread_rwlock_wrlock, (pthread_rwlock_t * lock), (lock), noexcept)
PASS_ON(int, pthread_spin_lock, (pthread_spinlock_t * lock), (lock), noexcept)
PASS_ON(int, pthread_cond_wait, (pthread_cond_t * condition, pthread_mutex_t* mutex), (condition, mutex))
PASS_ON(int, pthread_cond_timedwait,
        (pthread_cond_t * condition, pthread_mutex_t* mutex, const timespec* until),
        (condition, mutex, until))
PASS_ON(int, pthread_cond_clockwait,
        (pthread_cond_t * condition, pthread_mutex_t* mutex, clockid_t clock, const timespec* until),
        (condition, mutex, clock, until))
PASS_ON(int, pthread_cond_signal, (pthread_cond_t * condition), (condition), noexcept)
PASS_ON(int, pthread_cond_broadcast, (pthread_cond_t * condition), (condition), noexcept)
PASS_ON(int, pthread_join, (pthread_t thread, void** result), (thread, result))
PASS_ON(int, sem_wait, (sem_t * semaphore), (semaphore))
PASS_ON(int, sem_timedwait, (sem_t * semaphore, const timespec* until), (semaphore, until))
PASS_ON(int, sem_post, (sem_t * semaphore), (semaphore), noexcept)
PASS_ON(int, nanosleep, (const timespec* duration, timespec* left), (duration, left))
PASS_ON(int, clock_nanosleep, (clockid_t clock, int flags, const timespec* duration, timespec* left),
        (clock, flags, duration, left))
PASS_ON(int, usleep, (useconds_t microseconds), (microseconds))
PASS_ON(int, sched_yield, (), (), noexcept)
PASS_ON(ssize_t, read, (int file, void* data, std::size_t size), (file, data, size))
PASS_ON(ssize_t, write, (int file, const void* data, std::size_t size), (file, data, size))
PASS_ON(int, poll, (pollfd * files, nfds_t count, int timeout), (files, count, timeout))
PASS_ON(int, ppoll, (pollfd * files, nfds_t count, const timespec* timeout, const sigset_t* mask),
        (files, count, timeout, mask))
PASS_ON(int, select, (int count, fd_set* in, fd_set* out, fd_set* errors, timeval* timeout),
        (count, in, out, errors, timeout))
PASS_ON(int, epoll_wait, (int epoll, epoll_event* events, int count, int timeout),
        (epoll, events, count, timeout))
PASS_ON(ssize_t, recvmsg, (int socket, msghdr* message, int flags), (socket, message, flags))
PASS_ON(ssize_t, sendmsg, (int socket, const msghdr* message, int flags), (socket, message, flags))
PASS_ON(int, fflush, (std::FILE * file), (file))
PASS_ON(std::size_t, fwrite, (const void* data, std::size_t size, std::size_t count, std::FILE* file),
        (data, size, count, file))
PASS_ON(int, vfprintf, (std::FILE * file, const char* format, va_list arguments), (file, format, arguments))

extern "C" int ioctl(int file, unsigned long request, ...) noexcept {
  noteBlockingCall("ioctl");
  using Function = int (*)(int, unsigned long, void*);
  static constinit std::atomic<Function> known{nullptr};
  va_list list;
  va_start(list, request);
  void* const argument = va_arg(list, void*);
  va_end(list);
  return nextOf(known, "ioctl")(file, request, argument);
}

// The C++ library waits on futexes through syscall(), libjack too. libjack cancels a thread that waits there,
// and that unwinds the stack. So this definition must not be noexcept, as the C library's declaration is.
extern "C" long watchedSystemCall(long number, ...) asm("syscall");
extern "C" long watchedSystemCall(long number, ...) {
  noteBlockingCall("syscall");
  using Function = long (*)(long, long, long, long, long, long, long);
  static constinit std::atomic<Function> known{nullptr};
  va_list list;
  va_start(list, number);
  long arguments[6];
  for (long& argument : arguments) argument = va_arg(list, long);
  va_end(list);
  return nextOf(known, "syscall")(number, arguments[0], arguments[1], arguments[2], arguments[3],
                                  arguments[4], arguments[5]);
}
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)
