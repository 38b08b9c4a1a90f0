// The callback makes no system call: in a child process the kernel traps every one while cycles run.
#include <csignal>
#include <cstddef>
#include <cstdlib>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "routing_fixture.h"
#include "support/child_process.h"

namespace tolvane::test {
namespace {

volatile std::sig_atomic_t trapped = 0;

void onTrap(int /*signal*/) {
  trapped = trapped + 1;
}

constexpr int kNotTrapping = 200;  // the kernel refused the filter

/// From here on, every system call of this thread runs `onTrap` instead, except the end of the process and
/// the return from a signal.
void trapSystemCalls() {
  std::signal(SIGSYS, onTrap);
  sock_filter filter[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 1, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_rt_sigreturn, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
  };
  const sock_fprog program{static_cast<unsigned short>(std::size(filter)), filter};
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
    std::_Exit(kNotTrapping);
  }
}

class SystemCallTest : public RoutingTest {
 protected:
  SystemCallTest() {
    input_.add(2, 512, 0.5F).add(16, 512, 0.5F);
    for (int i = 0; i < 20; ++i) output_.add(1, 512);
    context_ = initialContext(18, 20);
    publish({{0, 0, 1.0F, true}, {17, 19, 0.5F, true}, {3, 19, 0.25F, true}, {-1, 90, 1.0F, true}});
  }

  /// The number of system calls in 1000 rounds of a cycle and `action`; at most 100.
  int systemCallsOf(const std::function<void()>& action) {
    const ChildResult child = runInChild([&] {
      cycle();  // the first cycle of the process writes its trace
      trapSystemCalls();
      for (int i = 0; i < 1000; ++i) {
        routeCycle(input_.get(), output_.get(), &context_);
        action();
      }
      std::_Exit(trapped < 100 ? trapped : 100);
    });
    EXPECT_EQ(child.signalNumber, 0);
    return child.exitStatus;
  }
};

TEST_F(SystemCallTest, ACycleMakesNone) {
  EXPECT_EQ(systemCallsOf([] {}), 0);
}

TEST_F(SystemCallTest, PublishingBetweenCyclesMakesNone) {
  const std::vector<PatchConnection> routes(64, PatchConnection{1, 2, 0.5F, true});
  EXPECT_EQ(systemCallsOf([&] { writeConnections(&context_, routes); }), 0);
}

TEST_F(SystemCallTest, TheTrapSeesAWrite) {
  EXPECT_EQ(systemCallsOf([] { [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, "", 0); }), 100);
}

TEST_F(SystemCallTest, TheTrapSeesOneCallAmongAThousandCycles) {
  int cycles = 0;
  const auto callOnce = [&cycles] {
    if (++cycles == 500) (void)::getppid();
  };
  EXPECT_EQ(systemCallsOf(callOnce), 1);
}

}  // namespace
}  // namespace tolvane::test
