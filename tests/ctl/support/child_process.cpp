#include "ctl/support/child_process.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tolvane::test {

namespace {

/// The two ends of a pipe or terminal: the child's and ours.
struct Channel {
  int child = -1;
  int ours = -1;
};

void closeOnExec(int descriptor) {
  ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

Channel terminal() {
  Channel channel;
  const winsize size{24, 80, 0, 0};
  if (::openpty(&channel.ours, &channel.child, nullptr, nullptr, &size) != 0)
    throw std::runtime_error("openpty");
  closeOnExec(channel.ours);
  closeOnExec(channel.child);
  return channel;
}

Channel pipeFromChild() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
  return {ends[1], ends[0]};
}

Channel pipeToChild() {
  const Channel reversed = pipeFromChild();
  return {reversed.ours, reversed.child};
}

Channel outputOf(const ChildProcess::Options& options) {
  if (options.terminalOut) return terminal();
  Channel channel = pipeFromChild();
  if (options.out == ChildProcess::Out::nobody) ::close(std::exchange(channel.ours, -1));
  if (options.out != ChildProcess::Out::stuck) return channel;
  ::fcntl(channel.child, F_SETFL, O_NONBLOCK);
  const std::string chunk(4096, '\n');
  while (::write(channel.child, chunk.data(), chunk.size()) > 0) {
  }
  ::fcntl(channel.child, F_SETFL, 0);
  return channel;
}

/// Limits the process's threads. The kernel counts all threads of a user and does not limit root's, so a root
/// process first becomes a user without other processes.
void limitThreads(int threads) {
  if (::geteuid() == 0) {
    const auto id = static_cast<uid_t>(3'000'000 + ::getpid());
    if (::setresgid(id, id, id) != 0 || ::setresuid(id, id, id) != 0) ::_exit(126);
  }
  const rlimit limit{static_cast<rlim_t>(threads), static_cast<rlim_t>(threads)};
  ::setrlimit(RLIMIT_NPROC, &limit);
}

[[noreturn]] void become(const std::vector<char*>& arguments, const std::vector<char*>& environment,
                         const ChildProcess::Options& options, int in, int out, int err) {
  ::dup2(in, STDIN_FILENO);
  ::dup2(out, STDOUT_FILENO);
  ::dup2(err, STDERR_FILENO);
  if (!options.folder.empty() && ::chdir(options.folder.c_str()) != 0) ::_exit(126);
  if (options.ownTerminal) {
    ::setsid();
    ::ioctl(STDIN_FILENO, TIOCSCTTY, 0);
  }
  for (const int descriptor : options.closed) ::close(descriptor);
  for (const auto& [resource, most] : options.limits) {
    const rlimit limit{most, most};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &limit);
  }
  if (options.threadLimit >= 0) limitThreads(options.threadLimit);
  ::execve(arguments.front(), arguments.data(), environment.data());
  ::_exit(127);
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& added) {
  std::vector<std::string> all;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!added.contains(text.substr(0, text.find('=')))) all.push_back(text);
  }
  for (const auto& [name, value] : added) {
    std::string& entry = all.emplace_back(name);
    entry.append("=").append(value);
  }
  return all;
}

int shellStatus(int waited) {
  return WIFEXITED(waited) ? WEXITSTATUS(waited) : 128 + WTERMSIG(waited);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const Options& options)
    : inputIsTerminal_(options.terminalOut) {
  std::vector<std::string> words = {TOLVANECTL_PATH};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = environmentWith(options.environment);
  // Made before the fork: in a program with threads, the child must not allocate memory.
  const std::vector<char*> argumentPointers = pointersTo(words);
  const std::vector<char*> environmentPointers = pointersTo(environment);

  const Channel out = outputOf(options);
  const Channel err = options.terminalErr ? terminal() : pipeFromChild();
  const Channel in = options.terminalOut ? Channel{out.child, out.ours} : pipeToChild();
  pid_ = ::fork();
  if (pid_ == 0) become(argumentPointers, environmentPointers, options, in.child, out.child, err.child);
  if (pid_ < 0) throw std::runtime_error("fork");

  ::close(out.child);
  ::close(err.child);
  if (!inputIsTerminal_) ::close(in.child);
  input_ = in.ours;
  descriptors_ = {out.ours, err.ours};
  if (options.out == Out::collected) addCollector(out.ours, out_);
  addCollector(err.ours, err_);
}

ChildProcess::~ChildProcess() {
  if (pid_ > 0) ::kill(pid_, SIGKILL);
  finish();
}

void ChildProcess::addCollector(int descriptor, std::string& into) {
  collectors_.emplace_back([this, descriptor, &into] { collect(descriptor, into); });
}

void ChildProcess::collect(int descriptor, std::string& into) {
  char chunk[4096];
  // Polls with a timeout, so that closeTerminal() can stop this thread before it closes the terminal.
  while (!terminalClosed_) {
    pollfd source{descriptor, POLLIN, 0};
    if (::poll(&source, 1, 10) == 0) continue;
    const ssize_t count = ::read(descriptor, chunk, sizeof chunk);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;  // the end of a terminal is a read error
    const std::lock_guard lock(mutex_);
    into.append(chunk, static_cast<std::size_t>(count));
  }
}

std::string ChildProcess::out() const {
  const std::lock_guard lock(mutex_);
  return out_;
}

std::string ChildProcess::err() const {
  const std::lock_guard lock(mutex_);
  return err_;
}

void ChildProcess::send(int signal) const {
  ::kill(pid_, signal);
}

void ChildProcess::write(const std::string& bytes) const {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = ::write(input_, bytes.data() + done, bytes.size() - done);
    if (count < 0) throw std::runtime_error("the child does not read");
    done += static_cast<std::size_t>(count);
  }
}

void ChildProcess::closeInput() {
  if (input_ >= 0 && !inputIsTerminal_) ::close(input_);
  input_ = -1;
}

bool ChildProcess::hasReadInput() const {
  int unread = -1;
  return ::ioctl(input_, FIONREAD, &unread) == 0 && unread == 0;
}

bool ChildProcess::isBlockedIn(long systemCall, int descriptor) const {
  std::ifstream file("/proc/" + std::to_string(pid_) + "/syscall");
  long call = -1;
  std::string argument;
  file >> call >> argument;
  return call == systemCall && std::strtol(argument.c_str(), nullptr, 16) == descriptor;
}

void ChildProcess::closeTerminal() {
  terminalClosed_ = true;
  for (std::thread& collector : collectors_) collector.join();
  collectors_.clear();
  ::close(std::exchange(descriptors_.front(), -1));
}

bool ChildProcess::waitUntil(const std::function<bool()>& condition) {
  const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > giveUp) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

bool ChildProcess::waitForOut(const std::string& text) const {
  return waitUntil([&] { return out().find(text) != std::string::npos; });
}

bool ChildProcess::waitForErr(const std::string& text) const {
  return waitUntil([&] { return err().find(text) != std::string::npos; });
}

Finished ChildProcess::finish() {
  closeInput();
  return finishWithOpenInput();
}

Finished ChildProcess::finishWithOpenInput() {
  if (pid_ <= 0) return {};
  int waited = 0;
  const auto giveUp = std::chrono::steady_clock::now() + std::chrono::minutes(2);
  while (::waitpid(pid_, &waited, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > giveUp) ::kill(pid_, SIGKILL);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  pid_ = -1;
  for (std::thread& collector : collectors_) collector.join();
  for (const int descriptor : descriptors_) ::close(descriptor);
  closeInput();
  return {shellStatus(waited), out(), err()};
}

Finished runProgram(const std::vector<std::string>& arguments) {
  return ChildProcess(arguments).finish();
}

Finished runProgram(const std::vector<std::string>& arguments, const ChildProcess::Options& options) {
  return ChildProcess(arguments, options).finish();
}

int runShell(const std::string& line) {
  return shellStatus(std::system(line.c_str()));  // NOLINT(concurrency-mt-unsafe,cert-env33-c)
}

}  // namespace tolvane::test
