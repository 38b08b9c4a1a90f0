// Runs the real program as a child process, like a shell.
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

/// The result of a finished child.
struct Finished {
  int status = -1;  // as in a shell: the exit status, or 128 + the signal that ended it
  std::string out;
  std::string err;
};

/// A running tolvanectl, whose output is collected as it arrives. The destructor kills it.
class ChildProcess {
 public:
  /// Where the child's standard output goes if it is no terminal.
  enum class Out {
    collected,
    stuck,   // a pipe that is full and stays full
    nobody,  // a pipe without a reader
  };
  struct Options {
    std::map<std::string, std::string> environment;  // added to the test's own
    bool terminalOut = false;                        // standard output (and input) is a terminal
    bool terminalErr = false;                        // standard error is a terminal
    bool ownTerminal = false;                        // the child is the session leader of that terminal
    Out out = Out::collected;
    std::set<int> closed;          // descriptors
    std::string folder;            // working folder; empty: the test's own
    std::map<int, rlim_t> limits;  // setrlimit's limits by resource
    int threadLimit = -1;          // of simultaneous threads; -1: no limit
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
  /// Writes to the child's standard input, which is a pipe if it is no terminal.
  void write(const std::string& bytes) const;
  void closeInput();
  /// True if the child has read all its input so far.
  [[nodiscard]] bool hasReadInput() const;
  /// True if the child's main thread waits in this system call on this descriptor.
  [[nodiscard]] bool isBlockedIn(long systemCall, int descriptor) const;
  /// Closes the terminal that is the child's standard output.
  void closeTerminal();

  /// Waits until the condition holds. Returns false after a minute.
  static bool waitUntil(const std::function<bool()>& condition);
  bool waitForOut(const std::string& text) const;
  bool waitForErr(const std::string& text) const;

  /// Closes the child's input and waits until the child ends. Kills it after two minutes.
  Finished finish();
  /// The same, but leaves the child's input open, so that the child must end for another reason.
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

/// Runs tolvanectl to its end, with empty standard input.
Finished runProgram(const std::vector<std::string>& arguments);
Finished runProgram(const std::vector<std::string>& arguments, const ChildProcess::Options& options);

/// Runs a shell command to its end and returns its status.
int runShell(const std::string& line);

}  // namespace tolvane::test
