#pragma once

#include <map>
#include <memory>

#include "ctl/http/door.h"
#include "ctl/http/exchange.h"
#include "ctl/http/server.h"

namespace tolvane::ctl::http {

/// The model's side of the WebSockets.
class SocketDoor : public Door {
 public:
  SocketDoor(control::Control& control, std::unique_ptr<Exchange> exchange, std::unique_ptr<Server> server);
  SocketDoor(const SocketDoor&) = delete;
  SocketDoor& operator=(const SocketDoor&) = delete;
  ~SocketDoor() override;

  void tell(const control::Event& event) override;
  [[nodiscard]] bool wantsChanges() const override { return anyWants(&control::Subscribe::changes); }
  [[nodiscard]] bool wantsMeters() const override { return anyWants(&control::Subscribe::meters); }

  /// None while the server must first send what waits.
  [[nodiscard]] int descriptor() const noexcept override {
    return isCongested() ? -1 : exchange_->descriptor();
  }
  void receive(Time now) override;
  void send(Time now) override;
  [[nodiscard]] std::optional<Time> due(Time now) const override;

 private:
  void handle(const FromClient& message);
  void execute(ClientNumber client, const Asked& asked);
  void execute(ClientNumber client, const control::Request& request);
  void post(ToClient message);
  [[nodiscard]] bool isCongested() const noexcept;
  [[nodiscard]] bool anyWants(bool control::Subscribe::*what) const;

  control::Control& control_;
  std::unique_ptr<Exchange> exchange_;
  std::unique_ptr<Server> server_;  // ends before the exchange
  std::map<ClientNumber, control::Subscribe> subscriptions_;
  bool isPosted_ = false;  // something that the server does not know of yet
  std::shared_ptr<SocketDoor*>
      self_;  // for replies that come later; its target is null once the door is closed
};

}  // namespace tolvane::ctl::http
