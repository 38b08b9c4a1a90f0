// Gives each test program its own /dev/shm. libjack keeps one database there for all clients of a user. A
// process that ends or hangs while it uses the database blocks all others: clients of another test, and the
// user's own.
#include <cstdio>
#include <fstream>
#include <string>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

/// Enters a new mount namespace. A user who is not root can do so only in a user namespace in which he is
/// root.
bool leaveNamespaces() {
  if (::unshare(CLONE_NEWNS) == 0) return true;
  const std::string user = std::to_string(::getuid());
  const std::string group = std::to_string(::getgid());
  if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  std::ofstream("/proc/self/setgroups") << "deny";
  std::ofstream("/proc/self/uid_map") << user + " " + user + " 1";
  std::ofstream("/proc/self/gid_map") << group + " " + group + " 1";
  return true;
}

/// Keeps the mounts made here invisible outside this process.
bool makePrivate() {
  for (const char* folder : {"/dev/shm", "/dev", "/"}) {
    if (::mount(nullptr, folder, nullptr, MS_PRIVATE, nullptr) == 0) return true;
  }
  return false;
}

[[gnu::constructor]] void takePrivateMemory() {
  if (!leaveNamespaces() || !makePrivate() ||
      ::mount("tmpfs", "/dev/shm", "tmpfs", MS_NOSUID | MS_NODEV, "mode=1777") != 0) {
    std::perror("The test shares /dev/shm with other programs, because it cannot have its own");
  }
}

}  // namespace
