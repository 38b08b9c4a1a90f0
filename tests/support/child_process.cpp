#include "support/child_process.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <sys/wait.h>
#include <unistd.h>

namespace tolvane::test {

namespace {

[[noreturn]] void throwErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

[[noreturn]] void runAsChild(int outputFile, const std::function<void()>& action) {
  ::dup2(outputFile, STDOUT_FILENO);
  ::close(outputFile);
  action();
  std::fflush(stdout);
  std::_Exit(0);
}

std::string readToEnd(int file) {
  std::string text;
  std::array<char, 4096> chunk{};
  for (;;) {
    const ssize_t got = ::read(file, chunk.data(), chunk.size());
    if (got <= 0) return text;
    text.append(chunk.data(), static_cast<std::size_t>(got));
  }
}

}  // namespace

ChildResult runInChild(const std::function<void()>& action) {
  std::array<int, 2> outputPipe{};
  if (::pipe(outputPipe.data()) != 0) throwErrno("pipe");
  std::fflush(nullptr);  // or the child would write the buffered output a second time
  const pid_t child = ::fork();
  if (child < 0) throwErrno("fork");
  if (child == 0) runAsChild(outputPipe[1], action);
  ::close(outputPipe[1]);
  ChildResult result;
  result.standardOutput = readToEnd(outputPipe[0]);
  ::close(outputPipe[0]);
  int status = 0;
  if (::waitpid(child, &status, 0) != child) throwErrno("waitpid");
  result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.signalNumber = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  return result;
}

}  // namespace tolvane::test
