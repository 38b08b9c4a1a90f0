// A model with a door for browsers in the test's own process. The test makes the turns of the run; the door's
// own thread serves the network.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ctl/doors/model_fixture.h"
#include "ctl/http/door.h"
#include "ctl/http/web_socket.h"

namespace tolvane::ctl::http {

class SocketTest : public ModelTest {
 protected:
  void SetUp() override { open({}); }

  void open(std::optional<Token> token) {
    door_.reset();
    auto opened = openDoor(*control_, {parseListenAddress("0").value(), std::move(token), std::nullopt});
    ASSERT_TRUE(opened) << opened.error().text;
    OpenDoor open = std::move(opened).value();
    door_ = std::move(open.door);
    port_ = ntohs(reinterpret_cast<const sockaddr_in&>(open.address.address).sin_port);
  }

  /// What a run does between two sleeps.
  void turn() {
    const auto now = std::chrono::steady_clock::now();
    door_->receive(now);
    if (control_->takeUnpublished()) ++publications_;
    control_->tick(now);
    door_->send(now);
  }

  /// Serves until the client has got a text. Empty: it was closed, or none came for 20 seconds.
  std::string next(test::WebSocket& client) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < deadline) {
      turn();
      if (auto text = client.receive(2)) return *text;
      if (client.closeCode() != 0 || client.socket().hasEnded()) break;
    }
    return {};
  }
  /// The next text with this in it.
  std::string nextWith(test::WebSocket& client, const std::string& part) {
    for (;;) {
      std::string text = next(client);
      if (text.empty() || text.find(part) != std::string::npos) return text;
    }
  }
  /// A client that has been welcomed.
  std::unique_ptr<test::WebSocket> connect() {
    auto client = std::make_unique<test::WebSocket>(port_);
    EXPECT_NE(nextWith(*client, "\"welcome\""), "") << client->answer();
    return client;
  }
  /// The answer to a request, which must have the id 7.
  std::string ask(test::WebSocket& client, const std::string& request) {
    client.send(request);
    return nextWith(client, "\"id\":7");
  }

  std::unique_ptr<Door> door_;
  std::uint16_t port_ = 0;
  int publications_ = 0;
};

}  // namespace tolvane::ctl::http
