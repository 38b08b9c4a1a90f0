// What a listener hears: a command's gain is in the next cycle, whole, and a ramp goes step by step. The
// device's tap sends the commands itself, between two cycles, so the machine's pace does not matter.
#include <csignal>
#include <functional>
#include <random>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "ctl/osc/packet.h"
#include "ctl/osc/udp_socket.h"
#include "ctl/process/early_end.h"
#include "ctl/run/command.h"
#include "ctl/support/files.h"
#include "ctl/support/ones.h"

namespace tolvane::ctl {
namespace {

using osc::Message;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr int kTimeoutMs = 30'000;

/// Notes each cycle's gains, and calls `after` behind each cycle.
struct Tap : test::GainTap {
  void hear(float first, float second, bool isWhole) override {
    areWhole = areWhole && isWhole;
    heard[0].push_back(first);
    heard[1].push_back(second);
    after(heard[0].size());
  }
  std::vector<float> heard[2];
  bool areWhole = true;
  std::function<void(std::size_t)> after;
};

class Heard : public testing::Test {
 protected:
  Heard() {
    // An address of the test's own, because other tests run at the same time.
    std::random_device random;
    const auto byte = [&] { return std::to_string(random() % 250 + 2); };
    address_ = "127." + byte() + '.' + byte() + '.' + byte();
    options_.patchPath = folder_ / "patch.json";
    options_.device = "Tolvane Virtual Device";
    options_.osc = address_ + ':' + std::to_string(kPort);
    test::writePatch(options_.patchPath, {{0, 0, 0.5F, true}});
    tap_.heard[0].reserve(100'000);
    tap_.heard[1].reserve(100'000);
  }

  /// Sends messages as one datagram and waits for the last one's answer.
  void command(const std::vector<Message>& messages) {
    client_.send(osc::encodePackets(messages).front(), kPort, address_.c_str());
    const std::string reply = messages.back().address + "/reply";
    for (;;) {
      const auto datagram = client_.receive(kTimeoutMs);
      ASSERT_TRUE(datagram);
      const auto packet = osc::decodePacket(*datagram);
      for (const Message& message : packet.value().messages) {
        if (message.address == reply) return;
      }
    }
  }
  /// Waits for an event with this address that `isIt`.
  void await(const std::string& address, const std::function<bool(const Message&)>& isIt) {
    for (;;) {
      const auto datagram = client_.receive(kTimeoutMs);
      ASSERT_TRUE(datagram) << address;
      const auto packet = osc::decodePacket(*datagram);
      for (const Message& message : packet.value().messages) {
        if (message.address == address && isIt(message)) return;
      }
    }
  }

  void run() {
    hal::VirtualDeviceConfig config;
    config.inputSignal = &ones_;
    config.outputTap = &tap_;
    ASSERT_EQ(hal::configureVirtualDevice(config), noErr);
    EXPECT_EQ(runCommand(options_), ExitStatus::done);
    ASSERT_EQ(hal::configureVirtualDevice({}), noErr);
  }
  void end() {
    tap_.isDone = true;
    ::kill(::getpid(), SIGTERM);
  }

  static constexpr std::uint16_t kPort = 29'000;
  const SignalsHeld held_{SIGTERM};  // in all threads, or one that is not the run's could get it
  test::TemporaryFolder folder_;
  std::string address_;
  RunOptions options_;
  test::UdpSocket client_;
  test::Ones ones_;
  Tap tap_;
};

TEST_F(Heard, ACommandIsInTheNextCycle) {
  const std::vector<std::vector<Message>> steps = {
      {{"/tolvane/route/gain", {1, 1, 0.0F}}},
      {{"/tolvane/route/mute", {1, 1, 1}}},
      {{"/tolvane/route/mute", {1, 1, 0}}},
      {{"/tolvane/route", {2, 1, 0.25F}},
       {"/tolvane/route", {2, 2, -2.0F}},
       {"/tolvane/route", {1, 1, 0.5F}}},
      {{"/tolvane/undo", {}}},
      {{"/tolvane/redo", {}}},
      {{"/tolvane/route/remove", {2, 2}}},
  };
  tap_.after = [&](std::size_t cycle) {
    // Each command comes after a cycle of quiet, then two cycles are heard.
    if (cycle % 3 != 0) return;
    if (cycle / 3 > steps.size()) return end();
    command(steps[cycle / 3 - 1]);
  };
  run();
  EXPECT_TRUE(tap_.areWhole);
  tap_.heard[0].resize(3 * (steps.size() + 1));
  tap_.heard[1].resize(3 * (steps.size() + 1));
  EXPECT_THAT(tap_.heard[0],
              ElementsAre(0.5F, 0.5F, 0.5F, 1.0F, 1.0F, 1.0F, 0.0F, 0.0F, 0.0F, 1.0F, 1.0F, 1.0F, 0.75F,
                          0.75F, 0.75F, 1.0F, 1.0F, 1.0F, 0.75F, 0.75F, 0.75F, 0.75F, 0.75F, 0.75F));
  EXPECT_THAT(tap_.heard[1],
              ElementsAre(0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, -2.0F,
                          -2.0F, -2.0F, 0.0F, 0.0F, 0.0F, -2.0F, -2.0F, -2.0F, 0.0F, 0.0F, 0.0F));
}

TEST_F(Heard, ARampGoesInEqualStepsOfOneCycle) {
  options_.rampMs = 100;  // ten cycles of 512 frames at 48 kHz are 107 ms
  test::writePatch(folder_ / "Quiet.json", {{0, 1, 1.0F, true}});
  options_.sceneFolder = folder_ / "";
  tap_.after = [&](std::size_t cycle) {
    if (cycle == 3) command({{"/tolvane/route", {1, 1, 1.0F}}});
    if (cycle > 3 && tap_.heard[0].back() == 1.0F && tap_.heard[1].back() == 0.0F)
      command({{"/tolvane/scene", {std::string("Quiet")}}});
    if (tap_.heard[1].back() == 1.0F) end();
  };
  run();
  EXPECT_TRUE(tap_.areWhole);
  for (std::vector<float>& heard : tap_.heard)
    heard.erase(std::unique(heard.begin(), heard.end()), heard.end());
  std::vector<float> first = {0.5F};
  std::vector<float> second = {0.0F};
  const auto step = [](double from, double to, int number) {
    return static_cast<float>(to + (from - to) * (10 - number) / 10.0);
  };
  for (int s = 1; s <= 10; ++s) first.push_back(step(0.5, 1.0, s));
  for (int s = 1; s <= 10; ++s) first.push_back(step(1.0, 0.0, s));
  for (int s = 1; s <= 10; ++s) second.push_back(step(0.0, 1.0, s));
  EXPECT_THAT(tap_.heard[0], ElementsAreArray(first));
  EXPECT_THAT(tap_.heard[1], ElementsAreArray(second));
}

TEST_F(Heard, MetersAndTheStatusComeFromTheDevice) {
  tap_.after = [](std::size_t) {};
  std::thread client([this] {
    // The run may not listen yet.
    for (;;) {
      client_.send(osc::encodePackets({{"/tolvane/subscribe", {}}}).front(), kPort, address_.c_str());
      if (client_.receive(100)) break;
    }
    await("/tolvane/event/inputs", [](const Message& inputs) {
      return inputs.arguments.size() == 1 + 3 * 18 && inputs.arguments[1] == osc::Argument(1.0F) &&
             inputs.arguments[2] == osc::Argument(1.0F) && inputs.arguments[3] == osc::Argument(1);
    });
    await("/tolvane/event/outputs", [](const Message& outputs) {
      return outputs.arguments.size() == 1 + 3 * 20 && outputs.arguments[1] == osc::Argument(0.5F) &&
             outputs.arguments[3] == osc::Argument(0) && outputs.arguments[4] == osc::Argument(0.0F);
    });
    await("/tolvane/event/status", [](const Message& status) {
      return status.arguments[0] == osc::Argument("Tolvane Virtual Device") &&
             std::get<std::int32_t>(status.arguments[1]) == 1 &&
             std::get<float>(status.arguments[4]) == 48000.0F &&
             std::get<std::int32_t>(status.arguments[6]) > 0 && std::get<float>(status.arguments[9]) > 0.0F;
    });
    end();
  });
  run();
  client.join();
}

}  // namespace
}  // namespace tolvane::ctl
