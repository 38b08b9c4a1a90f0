// A model with an OSC door in the test's own process, served in turns that the test makes.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ctl/doors/model_fixture.h"
#include "ctl/osc/door.h"
#include "ctl/osc/packet.h"
#include "ctl/osc/udp_socket.h"

namespace tolvane::ctl::osc {

class DoorTest : public ModelTest {
 protected:
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

  std::unique_ptr<Door> door_;
  test::UdpSocket client_;
  std::uint16_t port_ = 0;
  Door::Time now_ = Door::Time{} + std::chrono::hours(10);
  int publications_ = 0;
};

}  // namespace tolvane::ctl::osc
