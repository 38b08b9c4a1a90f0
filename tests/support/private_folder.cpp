#include "support/private_folder.h"

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tolvane::test {

namespace {

using namespace std::chrono_literals;

/// True if the socket accepts connections. Its file exists shortly before it does.
bool isListenedTo(const std::string& socketFile) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socketFile.copy(address.sun_path, sizeof address.sun_path - 1);
  const int client = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool isTaken = ::connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(client);
  return isTaken;
}

/// Starts a process that removes the folder when its standard input closes, at the latest when this process
/// ends.
pid_t startGuard(const std::string& folder, int pipeEnd) {
  const char* script = "read -r line; rm -rf \"$0\"";
  std::array<char*, 5> arguments = {const_cast<char*>("sh"), const_cast<char*>("-c"),
                                    const_cast<char*>(script), const_cast<char*>(folder.c_str()), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipeEnd, STDIN_FILENO);
  pid_t guard = -1;
  const int error = posix_spawn(&guard, "/bin/sh", &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start the guard of the server's folder");
  return guard;
}

}  // namespace

PrivateFolder::PrivateFolder(const std::string& prefix) {
  std::string pattern = (std::filesystem::temp_directory_path() / (prefix + "-XXXXXX")).string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a folder for the server");
  path_ = pattern;
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  guardPipe_ = ends[1];
  guard_ = startGuard(path_, ends[0]);
  ::close(ends[0]);
}

PrivateFolder::~PrivateFolder() {
  ::close(guardPipe_);
  ::waitpid(guard_, nullptr, 0);
}

pid_t startServer(const std::vector<std::string>& command,
                  const std::map<std::string, std::string>& environment, const std::string& log) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const pid_t server = ::fork();
  if (server < 0) throw std::runtime_error("cannot fork");
  if (server != 0) return server;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  for (const auto& [name, value] : environment) ::setenv(name.c_str(), value.c_str(), 1);
  if (!log.empty()) {
    const int file = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(file, STDOUT_FILENO);
    ::dup2(file, STDERR_FILENO);
  }
  ::execvp(arguments[0], arguments.data());
  ::_exit(127);
}

void killServer(pid_t server) {
  ::kill(server, SIGKILL);
  ::waitpid(server, nullptr, 0);
}

void awaitSocket(const std::string& socketFile, pid_t server) {
  for (int attempt = 0; attempt < 2000; ++attempt) {
    if (isListenedTo(socketFile)) return;
    if (::waitpid(server, nullptr, WNOHANG) == server) {
      throw std::runtime_error("a server ended before it listened at " + socketFile);
    }
    std::this_thread::sleep_for(5ms);
  }
  throw std::runtime_error("the server has not come up");
}

}  // namespace tolvane::test
