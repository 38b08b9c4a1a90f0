// A folder for the sockets and files of a private server.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tolvane::test {

/// Exists from construction to destruction, or until the test program ends, however it ends. Every failure
/// throws std::runtime_error.
class PrivateFolder {
 public:
  explicit PrivateFolder(const std::string& prefix);
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
  int guardPipe_ = -1;  // when this closes, at the latest at the end of the process, the folder is removed
  pid_t guard_ = -1;
};

/// Starts a program that is found in PATH, with these additions to the test's environment. It is killed when
/// the calling thread ends. `log` takes its standard output and error; an empty one leaves them to the test.
/// Throws std::runtime_error if the process cannot be made; a program that cannot be run ends with status
/// 127.
[[nodiscard]] pid_t startServer(const std::vector<std::string>& command,
                                const std::map<std::string, std::string>& environment = {},
                                const std::string& log = {});

/// Kills the process and waits until it has ended.
void killServer(pid_t server);

/// Waits until the server accepts connections at the socket. Throws std::runtime_error if it ends before, or
/// does not within ten seconds.
void awaitSocket(const std::string& socketFile, pid_t server);

}  // namespace tolvane::test
