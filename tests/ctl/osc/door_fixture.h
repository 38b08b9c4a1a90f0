// A model with an OSC door in the test's own process, served in turns that the test makes.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ctl/control/control.h"
#include "ctl/osc/door.h"
#include "ctl/osc/packet.h"
#include "ctl/osc/udp_socket.h"
#include "ctl/support/files.h"

namespace tolvane::ctl::osc {

/// Keeps the levels of a meter that the test sets.
struct StillMeter : control::Meter {
  void ask() override { isAsked = true; }
  [[nodiscard]] std::optional<control::Meters> take() override {
    return std::exchange(isAsked, false) ? std::optional(meters) : std::nullopt;
  }
  bool isAsked = false;
  control::Meters meters{{{0.5F, 0.25F, false}, {}}, {{1.0F, 0.5F, true}, {}}};
};

class DoorTest : public testing::Test {
 protected:
  DoorTest() {
    test::writePatch(path_, {{0, 0, 0.5F, true}, {1, 1, 1.0F, false}});
    ::mkdir(scenes_.c_str(), 0700);
    test::writePatch(scenes_ + "/1 Verse.json", {{0, 1, 0.25F, true}});
    test::writePatch(scenes_ + "/2 Chorus.json", {});
    patch_ = std::make_unique<PatchSource>(path_);
    const Routes routes = patch_->load().value();
    control::Control::Config config;
    config.sceneFolder = scenes_;
    config.inputLabels = {"Vox", ""};
    config.outputLabels = {"", "Wedge"};
    config.device = [this] { return device_; };
    control_ = std::make_unique<control::Control>(config, *patch_, routes, &meter_);
  }
  void SetUp() override { open({}); }

  void open(std::optional<Token> token) {
    door_.reset();
    auto opened = openDoor(*control_, parseListenAddress("0").value(), std::move(token));
    ASSERT_TRUE(opened) << opened.error().text;
    OpenDoor open = std::move(opened).value();
    door_ = std::move(open.door);
    port_ = ntohs(reinterpret_cast<const sockaddr_in&>(open.address.address).sin_port);
  }

  /// One turn of a run, as long as there is something to do.
  void turn() {
    do {
      door_->receive(now_);
      if (control_->takeUnpublished()) ++publications_;
      control_->tick(now_);
      door_->send(now_);
    } while (door_->due(now_) || control_->isSaving());
  }

  static std::vector<Message> messagesIn(test::UdpSocket& client) {
    std::vector<Message> messages;
    while (const auto datagram = client.receive()) {
      const auto packet = decodePacket(*datagram);
      EXPECT_TRUE(packet);
      if (!packet) continue;
      messages.insert(messages.end(), packet.value().messages.begin(), packet.value().messages.end());
    }
    return messages;
  }

  /// Sends a datagram and returns what the client then has got.
  std::vector<Message> exchange(const std::string& datagram, test::UdpSocket& client) {
    client.send(datagram, port_);
    turn();
    return messagesIn(client);
  }
  std::vector<Message> exchange(const std::string& datagram) { return exchange(datagram, client_); }
  std::vector<Message> ask(const Message& message, test::UdpSocket& client) {
    return exchange(encodePackets({message}).front(), client);
  }
  std::vector<Message> ask(const Message& message) { return ask(message, client_); }

  test::TemporaryFolder folder_;
  std::string path_ = folder_ / "patch.json";
  std::string scenes_ = folder_ / "scenes";
  control::DeviceStatus device_{.name = "Box",
                                .isAlive = true,
                                .inputs = 2,
                                .outputs = 2,
                                .sampleRateHz = 48000.0,
                                .bufferFrames = 64,
                                .cycles = 1234,
                                .deviceOverloads = 3,
                                .callbackOverloads = 1,
                                .load = 0.125,
                                .peakLoad = 0.5};
  StillMeter meter_;
  std::unique_ptr<PatchSource> patch_;
  std::unique_ptr<control::Control> control_;
  std::unique_ptr<Door> door_;
  test::UdpSocket client_;
  std::uint16_t port_ = 0;
  Door::Time now_ = Door::Time{} + std::chrono::hours(10);
  int publications_ = 0;
};

}  // namespace tolvane::ctl::osc
