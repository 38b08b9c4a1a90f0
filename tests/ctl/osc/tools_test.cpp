// The whole program with other people's tools: oscsend sends every command, oscdump shows every answer.
#include <atomic>
#include <csignal>
#include <cstdio>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ctl/osc/udp_socket.h"
#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "support/eventually.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;

/// Passes what oscsend sends on to the program, and the program's answers to oscdump, which cannot share a
/// port.
class Relay {
 public:
  Relay(std::uint16_t program, std::uint16_t dump)
      : thread_([=, this] {
          while (!done_) {
            const auto datagram = socket_.receive(50);
            if (datagram) socket_.send(*datagram, socket_.senderPort() == program ? dump : program);
          }
        }) {}
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;
  ~Relay() {
    done_ = true;
    thread_.join();
  }
  [[nodiscard]] std::string port() const { return std::to_string(socket_.port()); }

 private:
  UdpSocket socket_;
  std::atomic<bool> done_{false};
  std::thread thread_;
};

class OscTools : public testing::Test {
 protected:
  OscTools() {
    writePatch(patch_, {{0, 0, 0.5F, true}, {1, 1, 1.0F, true}});
    ::mkdir(scenes_.c_str(), 0700);
    writePatch(scenes_ + "/Verse.json", {{4, 4, 0.25F, true}});
  }
  ~OscTools() override {
    if (dump_ > 0) ::kill(dump_, SIGTERM);
  }

  std::vector<std::string> words(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {"run", "--patch", patch_, "--device", "Tolvane Virtual Device"};
    words.insert(words.end(), {"--osc", "0", "--scenes", scenes_});
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  /// The port that the program says it listens at.
  static std::uint16_t portOf(const ChildProcess& child) {
    const std::string before = "OSC at 127.0.0.1:";
    EXPECT_TRUE(child.waitForErr("routing on "));
    const std::string text = child.err();
    return static_cast<std::uint16_t>(std::stoi(text.substr(text.find(before) + before.size())));
  }

  void startDump() {
    std::uint16_t port = 0;
    { port = UdpSocket().port(); }
    dumpPort_ = port;
    const std::string line = "oscdump -L " + std::to_string(port) + " > " + (folder_ / "dump") +
                             " 2>&1 & echo $! > " + (folder_ / "pid");
    ASSERT_EQ(runShell(line), 0);
    dump_ = std::stoi(readBytes(folder_ / "pid"));
    // Its port is open once it shows what it gets.
    ASSERT_TRUE(eventually([&] {
      runShell("oscsend 127.0.0.1 " + std::to_string(port) + " /ready");
      return dumped().find("/ready") != std::string::npos;
    }));
  }
  [[nodiscard]] std::string dumped() { return readBytes(folder_ / "dump"); }
  [[nodiscard]] bool waitForDumped(const std::string& text) {
    return eventually([&] { return dumped().find(text) != std::string::npos; });
  }
  static void oscsend(const std::string& port, const std::string& message) {
    ASSERT_EQ(runShell("oscsend 127.0.0.1 " + port + ' ' + message), 0) << message;
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
  std::string scenes_ = folder_ / "scenes";
  std::uint16_t dumpPort_ = 0;
  pid_t dump_ = 0;
};

TEST_F(OscTools, EveryCommandIsDrivenAndHeard) {
  ChildProcess child(words());
  startDump();
  const Relay relay(portOf(child), dumpPort_);
  const std::pair<const char*, const char*> rows[] = {
      {"/tolvane/hello s anything", "/tolvane/hello/reply i 0"},
      {"/tolvane/subscribe s changes", "/tolvane/subscribe/reply i 0"},
      {"/tolvane/route iif 1 1 0.25", "/tolvane/route/reply i 1"},
      {"/tolvane/route/gain iif 1 1 -6", "/tolvane/event/route iiiffis 2 1 1 0.501187 -6.000000 1 \"\""},
      {"/tolvane/route/mute iii 1 1 1", "/tolvane/event/route iiiffis 3 1 1 0.501187 -6.000000 0 \"\""},
      {"/tolvane/route/label iis 1 1 Vox", "/tolvane/event/route iiiffis 4 1 1 0.501187 -6.000000 0 \"Vox\""},
      {"/tolvane/route/remove ii 2 2", "/tolvane/event/removed iii 5 2 2"},
      {"/tolvane/undo", "/tolvane/undo/reply i 6"},
      {"/tolvane/redo", "/tolvane/redo/reply i 7"},
      {"/tolvane/scenes", "/tolvane/scenes/reply/scene is 1 \"Verse\""},
      {"/tolvane/scene s Verse", "/tolvane/event/changed isii 8 \"scene\" 1 1"},
      {"/tolvane/scene/save s Bridge", "/tolvane/scene/save/reply i 8"},
      {"/tolvane/dump", "/tolvane/dump/reply/route iiiffis 1 5 5 0.250000 -12.041200 1 \"\""},
      {"/tolvane/status",
       "/tolvane/status/reply siiifiiiiffiiiiiissi \"Tolvane Virtual Device\" 1 18 20 48000.000000"},
      {"/tolvane/clips/reset", "/tolvane/clips/reset/reply i 8"},
      {"/tolvane/save", "/tolvane/save/reply i 8"},
      {"/tolvane/unsubscribe", "/tolvane/unsubscribe/reply i 8"},
      {"/tolvane/nothing", "/tolvane/nothing/error s \"there is no such address\""},
  };
  for (const auto& [sent, heard] : rows) {
    oscsend(relay.port(), sent);
    ASSERT_TRUE(waitForDumped(heard)) << sent << "\n" << dumped();
  }
  EXPECT_EQ(readBytes(patch_), R"([{"inputChannel":4,"outputChannel":4,"gain":0.25,"active":true}])");
  EXPECT_EQ(readBytes(scenes_ + "/Bridge.json"), readBytes(patch_));
  child.send(SIGINT);
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("    5       5  0.25  -12.0  yes\n"));
}

TEST_F(OscTools, EventsMayGoStraightToOscdump) {
  ChildProcess child(words());
  startDump();
  const std::string port = std::to_string(portOf(child));
  oscsend(port, "/tolvane/subscribe i " + std::to_string(dumpPort_));
  ASSERT_TRUE(waitForDumped("/tolvane/event/outputs "));
  oscsend(port, "/tolvane/route/mute iii 1 1 1");
  EXPECT_TRUE(waitForDumped("/tolvane/event/changed isii 1 \"edit\" 1 0")) << dumped();
}

TEST_F(OscTools, TheFileAndControlLiveTogether) {
  ChildProcess child(words({"--watch"}));
  startDump();
  const Relay relay(portOf(child), dumpPort_);
  oscsend(relay.port(), "/tolvane/subscribe s changes");
  ASSERT_TRUE(waitForDumped("/tolvane/subscribe/reply"));
  writeText(patch_, R"([ {"note": "mine", "inputChannel":2,"outputChannel":2,"gain":1,"active":true} ])");
  ASSERT_TRUE(waitForDumped("/tolvane/event/changed isii 1 \"file\" 1 2")) << dumped();
  oscsend(relay.port(), "/tolvane/route/gain iif 3 3 -20");
  ASSERT_TRUE(waitForDumped("/tolvane/event/changed isii 2 \"edit\" 1 0"));
  oscsend(relay.port(), "/tolvane/save");
  ASSERT_TRUE(waitForDumped("/tolvane/save/reply i 2")) << dumped();
  EXPECT_EQ(readBytes(patch_),
            R"([ {"note": "mine", "inputChannel":2,"outputChannel":2,"gain":0.1,"active":true} ])");
  // The save itself is no change of the file: the next change has the next number.
  writePatch(patch_, {});
  EXPECT_TRUE(waitForDumped("/tolvane/event/changed isii 3 \"file\" 0 1")) << dumped();
  oscsend(relay.port(), "/tolvane/undo");
  EXPECT_TRUE(waitForDumped("/tolvane/event/route iiiffis 4 3 3 0.100000 -20.000000 1 \"\"")) << dumped();
}

TEST_F(OscTools, AnotherAddressNeedsAToken) {
  for (const char* address : {"0.0.0.0:0", "[::]:0"}) {
    std::vector<std::string> words = this->words();
    words[6] = address;
    const Finished run = runProgram(words);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err,
              "tolvanectl: other machines can reach " + std::string(address) + "; this needs --token-file\n");
    EXPECT_EQ(run.out, "");
  }
}

TEST_F(OscTools, ATokenOpensOtherAddresses) {
  writeText(folder_ / "token", "0123456789abcdef\n");
  ::chmod((folder_ / "token").c_str(), 0600);
  std::vector<std::string> words = this->words({"--token-file", folder_ / "token", "--seconds", "0.1"});
  words[6] = "0.0.0.0:0";
  const Finished run = runProgram(words);
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr("tolvanectl: OSC at 0.0.0.0:"));
  EXPECT_THAT(run.err, HasSubstr(", with the token\n"));
  ::chmod((folder_ / "token").c_str(), 0644);
  EXPECT_EQ(runProgram(words).status, 2);
}

TEST_F(OscTools, APortThatIsTakenIsAFailure) {
  const UdpSocket other;
  std::vector<std::string> words = this->words();
  words[6] = std::to_string(other.port());
  const Finished run = runProgram(words);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: OSC at 127.0.0.1:" + words[6] + ": Address already in use\n");
}

TEST_F(OscTools, WithTheDoorClosedNothingListens) {
  ChildProcess child({"run", "--patch", patch_, "--device", "Tolvane Virtual Device"});
  ASSERT_TRUE(child.waitForErr("routing on "));
  const std::string descriptors = "ls -l /proc/" + std::to_string(child.pid()) + "/fd > " + (folder_ / "fds");
  ASSERT_EQ(runShell(descriptors), 0);
  ASSERT_EQ(
      runShell("cat /proc/net/udp /proc/net/udp6 /proc/net/tcp /proc/net/tcp6 > " + (folder_ / "sockets")),
      0);
  const std::string open = readBytes(folder_ / "fds");
  const std::string sockets = readBytes(folder_ / "sockets");
  for (std::size_t at = open.find("socket:["); at != std::string::npos; at = open.find("socket:[", at + 1)) {
    const std::size_t begin = at + 8;
    const std::string inode = open.substr(begin, open.find(']', begin) - begin);
    EXPECT_EQ(sockets.find(' ' + inode + ' '), std::string::npos) << "an internet socket is open";
  }
}

}  // namespace
}  // namespace tolvane::test
