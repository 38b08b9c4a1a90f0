// System calls as the kernel sees them (Syscall User Dispatch): while a thread's selector is set, each system
// call outside of one small range of code becomes a signal. The handler notes the call and makes it.
#include "support/realtime_watch.h"

#if defined(__x86_64__) && defined(__linux__)

#include <csignal>
#include <cstdint>

#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#if !defined(PR_SET_SYSCALL_USER_DISPATCH)
#define PR_SET_SYSCALL_USER_DISPATCH 59
#define PR_SYS_DISPATCH_ON 1
#endif

// Returns from the handler. The kernel lets the system calls of this range pass, since the selector is set
// again by then. The address after the call must be in the range too.
asm(R"(
    .text
    .globl tolvane_watch_return
    .globl tolvane_watch_return_end
    .hidden tolvane_watch_return
    .hidden tolvane_watch_return_end
    .type tolvane_watch_return, @function
tolvane_watch_return:
    mov $15, %eax
    syscall
    ud2
tolvane_watch_return_end:
)");
extern "C" void tolvane_watch_return();
extern "C" void tolvane_watch_return_end();

namespace tolvane::test {

namespace {

enum Selector : char { kPass = 0, kReport = 1 };
thread_local volatile char selector = kPass;

/// A signal's action as the kernel takes it: the C library's would return by code of its own.
struct KernelAction {
  void (*handler)(int, siginfo_t*, void*);
  unsigned long flags;
  void (*restorer)();
  std::uint64_t mask;
};
constexpr unsigned long kHasRestorer = 0x04000000;

long systemCall(const greg_t* registers) noexcept {
  long result = registers[REG_RAX];
  const auto r10 = static_cast<long>(registers[REG_R10]);
  const auto r8 = static_cast<long>(registers[REG_R8]);
  const auto r9 = static_cast<long>(registers[REG_R9]);
  asm volatile("mov %[r10], %%r10\n\tmov %[r8], %%r8\n\tmov %[r9], %%r9\n\tsyscall"
               : "+a"(result)
               : "D"(registers[REG_RDI]), "S"(registers[REG_RSI]),
                 "d"(registers[REG_RDX]), [r10] "m"(r10), [r8] "m"(r8), [r9] "m"(r9)
               : "rcx", "r8", "r9", "r10", "r11", "memory");
  return result;
}

/// A new thread or process would begin in the handler.
bool isOnlyMadeInPlace(long number) noexcept {
  return number == SYS_clone || number == SYS_clone3 || number == SYS_fork || number == SYS_vfork;
}

void onSystemCall(int /*signal*/, siginfo_t* info, void* context) {
  selector = kPass;
  greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  noteSystemCall(info->si_syscall);
  registers[REG_RAX] = info->si_syscall;
  if (isOnlyMadeInPlace(info->si_syscall)) {
    constexpr greg_t kInstructionBytes = 2;
    registers[REG_RIP] -= kInstructionBytes;  // makes the call again, and this watch sees no further one
    return;
  }
  registers[REG_RAX] = systemCall(registers);
  selector = kReport;
}

bool handleSignal() noexcept {
  const KernelAction action{&onSystemCall, SA_SIGINFO | kHasRestorer, &tolvane_watch_return, 0};
  return ::syscall(SYS_rt_sigaction, SIGSYS, &action, nullptr, sizeof action.mask) == 0;
}

/// Prepares the calling thread, whose signals may be blocked.
bool prepareThread() noexcept {
  sigset_t reports;
  sigemptyset(&reports);
  sigaddset(&reports, SIGSYS);
  pthread_sigmask(SIG_UNBLOCK, &reports, nullptr);
  const auto begin = reinterpret_cast<std::uintptr_t>(&tolvane_watch_return);
  const auto end = reinterpret_cast<std::uintptr_t>(&tolvane_watch_return_end);
  return ::prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, begin, end - begin, &selector) == 0;
}

}  // namespace

bool beginSystemCallReports() noexcept {
  static const bool kHandled = handleSignal();
  thread_local const bool kPrepared = kHandled && prepareThread();
  if (kPrepared) selector = kReport;
  return kPrepared;
}

void endSystemCallReports() noexcept {
  selector = kPass;
}

}  // namespace tolvane::test

#else

namespace tolvane::test {

bool beginSystemCallReports() noexcept {
  return false;
}

void endSystemCallReports() noexcept {}

}  // namespace tolvane::test

#endif
