// Eight clients that send as fast as they may, one of which never reads: every cycle plays one of the tables
// that were sent, whole. TOLVANE_CONTROL_SECONDS in the environment makes a minute of it, at 10,000 messages
// a second, with the process's memory.
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "ctl/http/web_socket.h"
#include "ctl/process/early_end.h"
#include "ctl/run/command.h"
#include "ctl/support/files.h"
#include "ctl/support/ones.h"

namespace tolvane::ctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kClients = 8;
constexpr int kMessagesPerText =
    50;  // pairs of them set one gain on one output and its opposite on the other
constexpr int kMessagesPerSecond = 10'000;
constexpr int kValues = 1000;

/// Counts the cycles whose two outputs are not the same gain with opposite signs, one of those that are sent.
struct LoadTap : test::GainTap {
  void hear(float plus, float minus, bool isWhole) override {
    ++cycles;
    if (!isWhole || minus != -plus || !isSent(plus)) ++wrong;
    if (plus != last) ++changes;
    last = plus;
  }
  static bool isSent(float gain) {
    return gain == static_cast<float>(std::round(static_cast<double>(gain) * kValues) / kValues);
  }
  std::atomic<std::uint64_t> cycles = 0;
  std::uint64_t wrong = 0;
  std::uint64_t changes = 0;
  float last = 0.5F;
};

long residentKib() {
  std::ifstream file("/proc/self/statm");
  long size = 0;
  long resident = 0;
  file >> size >> resident;
  return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

/// Pairs of messages as one array.
std::string textOfPairs(int& value) {
  std::string text = "[";
  for (int pair = 0; pair < kMessagesPerText / 2; ++pair) {
    value = value % (kValues - 1) + 1;
    char digits[8];
    std::snprintf(digits, sizeof digits, "0.%03d", value);
    text += std::string(R"({"command":"route","input":1,"output":1,"gain":)") + digits +
            R"(},{"command":"route","input":1,"output":2,"gain":-)" + digits + "},";
  }
  text.back() = ']';
  return text;
}

class ControlLoad : public testing::Test {
 protected:
  ControlLoad() {
    if (const char* text = std::getenv("TOLVANE_CONTROL_SECONDS")) seconds_ = std::atoi(text);
    options_.patchPath = folder_ / "patch.json";
    options_.device = "Tolvane Virtual Device";
    options_.http = "127.0.0.1:" + std::to_string(port_);
    test::writePatch(options_.patchPath, {{0, 0, 0.5F, true}, {0, 1, -0.5F, true}});
  }

  [[nodiscard]] int textsOfAClient() const {
    if (seconds_ == 0) return 40;
    return seconds_ * kMessagesPerSecond / kMessagesPerText / kClients;
  }

  void send(int number) {
    // The run may not listen yet.
    std::unique_ptr<test::WebSocket> socket;
    for (;;) {
      socket = std::make_unique<test::WebSocket>(port_);
      if (socket->receive(1000)) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const bool reads = number > 0;
    socket->send(R"({"command":"subscribe","meters":true})");
    const auto begin = Clock::now();
    int value = number * kValues / kClients;
    int answers = 0;
    const auto read = [&](int timeoutMs) {
      while (const auto text = socket->receive(timeoutMs)) {
        if (text->find("\"answer\":\"route\"") != std::string::npos && ++answers % kMessagesPerText == 0)
          return;
      }
    };
    for (int text = 0; text < textsOfAClient(); ++text) {
      if (seconds_ > 0)
        std::this_thread::sleep_until(begin + std::chrono::milliseconds(1000) * text * kMessagesPerText *
                                                  kClients / kMessagesPerSecond);
      socket->send(textOfPairs(value));
      if (reads) read(0);
    }
    const int expected = textsOfAClient() * kMessagesPerText;
    const auto deadline = Clock::now() + std::chrono::seconds(60);
    while (reads && answers < expected && Clock::now() < deadline) read(100);
    EXPECT_EQ(answers, reads ? expected : 0) << "client " << number;
  }

  void watchMemory() {
    while (!tap_.isDone) {
      std::this_thread::sleep_for(std::chrono::seconds(1));
      memoryKib_.push_back(residentKib());
    }
  }

  void serveAll() {
    std::vector<std::thread> clients;
    for (int number = 0; number < kClients; ++number) clients.emplace_back([this, number] { send(number); });
    std::thread memory([this] { watchMemory(); });
    for (std::thread& client : clients) client.join();
    tap_.isDone = true;
    memory.join();
    ::kill(::getpid(), SIGTERM);
  }

  const SignalsHeld held_{SIGTERM};  // in all threads, or one that is not the run's could get it
  test::TemporaryFolder folder_;
  RunOptions options_;
  test::Ones input_;
  LoadTap tap_;
  int seconds_ = 0;
  std::uint16_t port_ = static_cast<std::uint16_t>(20'000 + ::getpid() % 10'000);
  std::vector<long> memoryKib_;
};

TEST_F(ControlLoad, EveryCycleHasOneOfTheTablesThatWereSent) {
  hal::VirtualDeviceConfig config;
  config.inputSignal = &input_;
  config.outputTap = &tap_;
  ASSERT_EQ(hal::configureVirtualDevice(config), noErr);
  std::thread clients([this] { serveAll(); });
  EXPECT_EQ(runCommand(options_), ExitStatus::done);
  clients.join();
  ASSERT_EQ(hal::configureVirtualDevice({}), noErr);
  EXPECT_GT(tap_.cycles, 0U);
  EXPECT_EQ(tap_.wrong, 0U) << "of " << tap_.cycles;
  std::printf("%llu cycles, %llu changes heard, %llu wrong\n", static_cast<unsigned long long>(tap_.cycles),
              static_cast<unsigned long long>(tap_.changes), static_cast<unsigned long long>(tap_.wrong));
  if (memoryKib_.size() < 20) return;
  const long early = memoryKib_[9];
  std::printf("memory in KiB, every 10 s:");
  for (std::size_t second = 9; second < memoryKib_.size(); second += 10)
    std::printf(" %ld", memoryKib_[second]);
  std::printf("\n");
  // What waits for the client that never reads may grow to its limit.
  EXPECT_LT(memoryKib_.back() - early, 16 * 1024);
}

}  // namespace
}  // namespace tolvane::ctl
