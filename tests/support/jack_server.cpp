#include "support/jack_server.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <jack/jack.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/fatal.h"
#include "support/eventually.h"

extern char** environ;

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;

std::string serverName() {
  return "tolvane-test-" + std::to_string(getpid());
}

struct Pipe {
  Pipe() { EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0); }
  std::array<int, 2> ends{-1, -1};
};

pid_t spawnKeeper(const std::string& frames, const std::string& alsaPcm, int input, int output) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  const std::string name = serverName();
  std::array<const char*, 8> arguments{"sh",
                                       TOLVANE_JACK_SERVER_SCRIPT,
                                       TOLVANE_JACK_WAIT,
                                       name.c_str(),
                                       "48000",
                                       frames.c_str(),
                                       alsaPcm.c_str(),
                                       nullptr};
  pid_t pid = 0;
  EXPECT_EQ(posix_spawnp(&pid, "sh", &actions, nullptr, const_cast<char**>(arguments.data()), environ), 0);
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}

/// True if every thread of the process is stopped.
bool isStopped(pid_t pid) {
  const std::filesystem::directory_iterator threads("/proc/" + std::to_string(pid) + "/task");
  return std::all_of(begin(threads), end(threads), [](const auto& thread) {
    std::ifstream file(thread.path() / "stat");
    std::string text;
    std::getline(file, text);
    const std::size_t name = text.rfind(')');  // the state follows the name
    return name != std::string::npos && text.compare(name, 3, ") T") == 0;
  });
}

pid_t readPid(int fd) {
  std::string text;
  char character = 0;
  while (read(fd, &character, 1) == 1 && character != '\n') text += character;
  return static_cast<pid_t>(std::strtol(text.c_str(), nullptr, 10));
}

/// True if the process has ended, also if its parent, the keeper, has not reaped it yet.
bool hasEnded(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string text;
  return !std::getline(file, text) || text.find(") Z ") != std::string::npos;
}

void silence(const char* /*message*/) {}

}  // namespace

void JackServer::choosePrivateName() {
  setenv("JACK_DEFAULT_SERVER", serverName().c_str(), 1);
  jack_set_error_function(&silence);
  jack_set_info_function(&silence);
}

JackServer::JackServer(std::uint32_t bufferFrames, const std::string& alsaPcm) {
  choosePrivateName();
  const Pipe toKeeper;
  const Pipe fromKeeper;
  keeper_ = spawnKeeper(std::to_string(bufferFrames), alsaPcm, toKeeper.ends[0], fromKeeper.ends[1]);
  close(toKeeper.ends[0]);
  close(fromKeeper.ends[1]);
  keeperInput_ = toKeeper.ends[1];
  jackd_ = readPid(fromKeeper.ends[0]);
  close(fromKeeper.ends[0]);
  if (jackd_ == 0 || hasEnded(jackd_)) fatal("the private jackd does not come up");
}

JackServer::~JackServer() {
  close(keeperInput_);
  waitpid(keeper_, nullptr, 0);
}

void JackServer::kill() {
  signalAndAwaitEnd(SIGKILL);
}

void JackServer::terminate() {
  signalAndAwaitEnd(SIGTERM);
}

void JackServer::pause() {
  ::kill(jackd_, SIGSTOP);
  // On a busy machine its other threads may still answer after kill() returns.
  EXPECT_TRUE(eventually([this] { return isStopped(jackd_); })) << "jackd does not stop";
}

void JackServer::resume() {
  ::kill(jackd_, SIGCONT);
}

void JackServer::signalAndAwaitEnd(int signal) {
  ::kill(jackd_, signal);
  EXPECT_TRUE(eventually([this] { return hasEnded(jackd_); })) << "jackd does not end";
}

}  // namespace tolvane::test
