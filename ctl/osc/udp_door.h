#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ctl/doors/hosts.h"
#include "ctl/doors/token.h"
#include "ctl/doors/token_bucket.h"
#include "ctl/osc/door.h"
#include "ctl/osc/packet.h"
#include "ctl/osc/subscribers.h"

namespace tolvane::ctl::osc {

/// OSC over a UDP socket of our own. The library's server is not used: it takes any sender's messages, any
/// number at a time, keeps bundles of a later time in a queue of its own, and looks names up while it
/// receives.
class UdpDoor : public Door {
 public:
  /// Takes over the socket, which must not block.
  UdpDoor(control::Control& control, int socket, std::optional<Token> token);
  UdpDoor(const UdpDoor&) = delete;
  UdpDoor& operator=(const UdpDoor&) = delete;
  ~UdpDoor() override;

  void tell(const control::Event& event) override;
  [[nodiscard]] bool wantsChanges() const override {
    return subscribers_.anyWants(&control::Subscribe::changes);
  }
  [[nodiscard]] bool wantsMeters() const override {
    return subscribers_.anyWants(&control::Subscribe::meters);
  }

  [[nodiscard]] int descriptor() const noexcept override { return socket_; }
  void receive(Time now) override;
  void send(Time now) override;
  [[nodiscard]] std::optional<Time> due(Time now) const override;

 private:
  /// The sender of the datagram that is handled.
  struct Sender {
    sockaddr_storage address;
    Hosts::Host& host;
    Time now;
  };
  struct Waiting {
    sockaddr_storage to;
    Datagram datagram;
  };

  void handle(std::string_view datagram, const sockaddr_storage& from, Time now);
  void handle(const Message& message, const Sender& sender);
  /// Says that the sender's rate is exceeded, once a second.
  void complain(const Sender& sender);
  void hello(const Message& message, const Sender& sender);
  [[nodiscard]] bool isStranger(const Sender& sender) const;
  /// Strangers are answered so seldom that nobody can be flooded with answers to what came in his name.
  void refuse(const Sender& sender, const std::string& address, const std::string& why);
  void execute(const control::Command& command, const std::string& address, const Sender& sender);
  void answer(const sockaddr_storage& to, const std::string& address, const control::Answer& answer);
  /// False if the system takes no more now.
  [[nodiscard]] bool sendNow(const sockaddr_storage& to, const Datagram& datagram) const;
  [[nodiscard]] bool isSending() const;

  control::Control& control_;
  int socket_;
  std::optional<Token> token_;
  Hosts hosts_;
  Subscribers subscribers_;
  TokenBucket strangers_{50.0, 50.0};  // answers
  std::deque<Waiting> answers_;
  std::vector<char> buffer_;
  bool mayBeMore_ = false;          // datagrams that have come
  std::shared_ptr<UdpDoor*> self_;  // for replies that come later; its target is null once the door is closed
};

}  // namespace tolvane::ctl::osc
