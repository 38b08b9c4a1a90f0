// The whole program against itself: a run that serves HTTP, and ctl.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ctl/http/web_socket.h"
#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Remote : public testing::Test {
 protected:
  Remote() {
    writePatch(patch_, {{0, 0, 0.5F, true}, {1, 1, 1.0F, true}});
    ::mkdir(scenes_.c_str(), 0700);
    writePatch(scenes_ + "/Verse.json", {{4, 4, 0.25F, true}});
    writeText(token_, "0123456789abcdef\n");
    ::chmod(token_.c_str(), 0600);
  }

  [[nodiscard]] std::vector<std::string> runWords(const std::string& http,
                                                  const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {"run", "--patch", patch_, "--device", "Tolvane Virtual Device"};
    words.insert(words.end(), {"--http", http, "--scenes", scenes_});
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  void start(const std::vector<std::string>& more = {}) {
    run_ = std::make_unique<ChildProcess>(runWords("0", more));
    ASSERT_TRUE(run_->waitForErr("routing on ")) << run_->err();
    const std::string text = run_->err();
    const std::size_t at = text.find("://127.0.0.1:") + 13;
    port_ = text.substr(at, text.find('/', at) - at);
  }
  [[nodiscard]] std::vector<std::string> words(const std::vector<std::string>& command) const {
    std::vector<std::string> words = {"ctl", "--at", "127.0.0.1:" + port_};
    words.insert(words.end(), command.begin(), command.end());
    return words;
  }
  [[nodiscard]] Finished ctl(const std::vector<std::string>& command) const {
    return runProgram(words(command));
  }
  void expectDone(const std::vector<std::string>& command) {
    const Finished done = ctl(command);
    EXPECT_EQ(done.status, 0) << command.front() << ": " << done.err;
    EXPECT_EQ(done.out, "");
    EXPECT_EQ(done.err, "");
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
  std::string scenes_ = folder_ / "scenes";
  std::string token_ = folder_ / "token";
  std::unique_ptr<ChildProcess> run_;
  std::string port_;
};

TEST_F(Remote, EveryCommandIsDone) {
  start();
  expectDone({"gain", "1", "1", "-6"});
  expectDone({"route", "1", "2", "-0.5"});
  expectDone({"mute", "2", "2"});
  expectDone({"label", "1", "2", "Vox \"x\""});
  EXPECT_EQ(ctl({"dump"}).out,
            "input  output       gain    dB  active  from  to  label\n"
            "    1       1  0.5011872  -6.0  yes\n"
            "    2       2        1.0   0.0  no\n"
            "    1       2       -0.5  -6.0  yes               Vox \"x\"\n");
  EXPECT_THAT(ctl({"dump", "--json"}).out,
              StartsWith(R"({"answer":"dump","ok":true,"serial":4,"routes":[{"input":1,"output":1,)"));
  expectDone({"unmute", "2", "2"});
  expectDone({"remove", "1", "2"});
  expectDone({"gain", "1", "1", "off"});
  expectDone({"save"});
  EXPECT_EQ(readBytes(patch_), R"([{"inputChannel":0,"outputChannel":0,"gain":0.0,"active":true},)"
                               R"({"inputChannel":1,"outputChannel":1,"gain":1,"active":true}])");
  expectDone({"save-scene", "Bridge"});
  EXPECT_EQ(ctl({"scenes"}).out, "Bridge\nVerse\n");
  expectDone({"scene", "--number", "2"});
  expectDone({"scene", "Bridge"});
  expectDone({"undo"});
  expectDone({"redo"});
  expectDone({"reset-clips"});
  const std::string status = ctl({"status"}).out;
  EXPECT_THAT(
      status,
      StartsWith("device: Tolvane Virtual Device\nchannels: 18 in, 20 out\nrate: 48000 Hz, 512 frames\n"));
  EXPECT_THAT(status, HasSubstr("\nroutes: 2, heard 2\nundo: 9, redo: 0\n"));
  EXPECT_THAT(status, HasSubstr("\npatch: " + patch_ + "\nscene: Bridge\n")) << "which is as it was saved";
  expectDone({"undo"});
  EXPECT_THAT(ctl({"status"}).out, HasSubstr(patch_ + " (not saved)\nscene: Bridge\n"));
}

TEST_F(Remote, ARefusalIsAFailure) {
  start();
  const Finished refused = ctl({"gain", "7", "1", "0"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.err, "tolvanectl: there is no route from input 7 to output 1\n");
  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{"gain", "0", "1", "0"},
                                             {"gain", "1", "1", "loud"},
                                             {"gain", "1", "1"},
                                             {"scene"},
                                             {"jump"},
                                             {"mute", "x", "1"}})
    EXPECT_EQ(ctl(wrong).status, 2) << wrong.front();
}

TEST_F(Remote, WatchPrintsEveryChange) {
  start();
  const ChildProcess lines(words({"watch"}));
  const ChildProcess json(words({"watch", "--json", "--meters"}));
  ASSERT_TRUE(json.waitForOut("\"event\":\"meters\""));
  // The other one may not have subscribed yet, so the change is repeated.
  double level = 0.0;
  ASSERT_TRUE(ChildProcess::waitUntil([&] {
    expectDone({"gain", "1", "1", std::to_string(level -= 1.0)});
    return lines.out().find(" edit\n  1 to 1: ") != std::string::npos;
  }));
  EXPECT_TRUE(json.waitForOut("\"event\":\"changed\",\"serial\":1,\"cause\":\"edit\""));
  run_->send(SIGTERM);
  EXPECT_TRUE(lines.waitForErr("127.0.0.1:" + port_ + ": closed: the run has ended\n"));
}

TEST_F(Remote, WhoeverIsNotThereIsAFailure) {
  start();
  run_->send(SIGTERM);
  EXPECT_EQ(run_->finish().status, 0);
  const Finished lost = ctl({"status"});
  EXPECT_EQ(lost.status, 1);
  EXPECT_THAT(lost.err, StartsWith("tolvanectl: 127.0.0.1:" + port_ + ": cannot connect"));
  EXPECT_EQ(runProgram({"ctl", "--at", "nonsense", "status"}).status, 2);
}

TEST_F(Remote, TheTokenIsAskedForAndSaid) {
  start({"--token-file", token_});
  const Finished refused = ctl({"status"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, HasSubstr("this run needs its token; see --token-file"));
  EXPECT_THAT(ctl({"--token-file", token_, "status"}).out, HasSubstr("routes: 2"));
  writeText(token_, "0123456789abcdeX\n");
  const Finished wrong = ctl({"--token-file", token_, "status"});
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(wrong.err, "tolvanectl: the token is wrong\n");
}

TEST_F(Remote, OtherMachinesNeedAToken) {
  for (const char* address : {"0.0.0.0:0", "[::]:0"}) {
    const Finished run = runProgram(runWords(address));
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err,
              "tolvanectl: other machines can reach " + std::string(address) + "; this needs --token-file\n");
  }
}

TEST_F(Remote, APortThatIsTakenIsAFailure) {
  start();
  const Finished run = runProgram(runWords(port_));
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: HTTP at 127.0.0.1:" + port_ + ": Address already in use\n");
}

TEST_F(Remote, TlsEncryptsAndIsChecked) {
  const std::string certificate = folder_ / "cert.pem";
  const std::string key = folder_ / "key.pem";
  const std::string make =
      "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=localhost -addext "
      "subjectAltName=DNS:localhost -keyout " +
      key + " -out " + certificate + " 2>/dev/null";
  ASSERT_EQ(runShell(make), 0);
  start({"--tls-cert", certificate, "--tls-key", key});
  EXPECT_THAT(run_->err(), HasSubstr("tolvanectl: https://127.0.0.1:" + port_ + "/\n"));
  const std::string at = "localhost:" + port_;
  EXPECT_THAT(runProgram({"ctl", "--at", at, "--tls-ca", certificate, "status"}).out, HasSubstr("routes: 2"));
  EXPECT_EQ(runProgram({"ctl", "--at", at, "--tls", "status"}).status, 1);  // nobody vouches for it
  EXPECT_EQ(runProgram({"ctl", "--at", at, "status"}).status, 1);
  // In plain text nothing is answered.
  TcpSocket plain(static_cast<std::uint16_t>(std::stoi(port_)));
  plain.send("GET / HTTP/1.1\r\nHost: localhost\r\n\r\n");
  EXPECT_THAT(plain.receiveAll(20'000), testing::Not(HasSubstr("200 OK")));
}

TEST_F(Remote, TlsNeedsBothFilesAndGoodOnes) {
  for (const std::vector<std::string>& more :
       std::vector<std::vector<std::string>>{{"--tls-cert", token_}, {"--tls-key", token_}}) {
    const Finished run = runProgram(runWords("0", more));
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "tolvanectl: --tls-cert and --tls-key belong together\n");
  }
  const Finished run = runProgram(runWords("0", {"--tls-cert", token_, "--tls-key", token_}));
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "tolvanectl: TLS: the certificate " + token_ + " and the key " + token_ + " cannot be used\n");
}

}  // namespace
}  // namespace tolvane::test
