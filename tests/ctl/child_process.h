// The real program as a child process, as a shell would run it.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <sys/types.h>

namespace tolvane::test {

/// What a finished child left.
struct Finished {
  int status = -1;  // as a shell gives it: the exit status, or 128 and the signal that ended it
  std::string out;
  std::string err;
};

/// tolvanectl running, its output collected as it comes. Killed when it goes out of scope.
class ChildProcess {
 public:
  /// What becomes of the child's standard output where it is no terminal.
  enum class Out {
    collected,
    stuck,   // a pipe that is full, and stays so
    nobody,  // a pipe whose reader is gone
  };
  struct Options {
    std::map<std::string, std::string> environment;  // added to the test's own
    bool terminalOut = false;                        // standard output (and input) is a terminal
    bool terminalErr = false;                        // standard error is a terminal
    bool ownTerminal = false;                        // and the child leads a session there
    Out out = Out::collected;
    std::set<int> closed;          // descriptors
    std::string folder;            // to run in; empty: the test's own
    std::map<int, rlim_t> limits;  // by resource, as setrlimit has them
    int threadLimit = -1;          // that it may have at a time; -1: none
  };

  explicit ChildProcess(const std::vector<std::string>& arguments) : ChildProcess(arguments, Options{}) {}
  ChildProcess(const std::vector<std::string>& arguments, const Options& options);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  [[nodiscard]] std::string out() const;
  [[nodiscard]] std::string err() const;

  [[nodiscard]] pid_t pid() const { return pid_; }
  void send(int signal) const;
  /// Writes to the child's standard input (a pipe, where it is no terminal).
  void write(const std::string& bytes) const;
  void closeInput();
  /// Whether it has read all that was written to it.
  [[nodiscard]] bool hasReadInput() const;
  /// Whether its main thread waits in this system call on this descriptor.
  [[nodiscard]] bool isBlockedIn(long systemCall, int descriptor) const;
  /// Closes the terminal that is its standard output.
  void closeTerminal();

  /// Waits, for a minute at the most, until the condition holds; false when it never did.
  static bool waitUntil(const std::function<bool()>& condition);
  bool waitForOut(const std::string& text) const;
  bool waitForErr(const std::string& text) const;

  /// Waits for the end; a child that does not end within two minutes is killed.
  Finished finish();
  /// The same, but what it reads from stays open, so that it ends for another reason.
  Finished finishWithOpenInput();

 private:
  void collect(int descriptor, std::string& into);
  void addCollector(int descriptor, std::string& into);

  pid_t pid_ = -1;
  int input_ = -1;
  bool inputIsTerminal_ = false;
  mutable std::mutex mutex_;
  std::string out_;
  std::string err_;
  std::atomic<bool> terminalClosed_{false};
  std::vector<std::thread> collectors_;
  std::vector<int> descriptors_;
};

/// Runs it to its end, with nothing on standard input.
Finished runProgram(const std::vector<std::string>& arguments);
Finished runProgram(const std::vector<std::string>& arguments, const ChildProcess::Options& options);

/// Runs any other program to its end, by a shell line. Its status.
int runShell(const std::string& line);

}  // namespace tolvane::test
