#include "ctl/http/socket_door.h"

#include <algorithm>
#include <utility>

namespace tolvane::ctl::http {

namespace {

using control::Answer;
using control::Control;
using control::Event;
using control::Meters;
using control::Request;
using control::Subscribe;
using control::Unsubscribe;

constexpr int kMostAtOnce = 64;
constexpr std::chrono::milliseconds kLongestTurn{1};
/// Messages that may wait for the server; nothing is received beyond.
constexpr std::size_t kMostToClients = 4096;
/// Beyond this, whoever hears events is dropped.
constexpr std::size_t kMostWithEvents = std::size_t{4} * kMostToClients;

}  // namespace

SocketDoor::SocketDoor(Control& control, std::unique_ptr<Exchange> exchange, std::unique_ptr<Server> server)
    : control_(control),
      exchange_(std::move(exchange)),
      server_(std::move(server)),
      self_(std::make_shared<SocketDoor*>(this)) {
  control_.add(*this);
}

SocketDoor::~SocketDoor() {
  *self_ = nullptr;
  control_.remove(*this);
}

void SocketDoor::receive(Time /*now*/) {
  const auto begin = std::chrono::steady_clock::now();
  for (int count = 0; count < kMostAtOnce && !isCongested(); ++count) {
    const auto message = exchange_->nextFromClient();
    if (!message) return;
    handle(*message);
    if (std::chrono::steady_clock::now() - begin > kLongestTurn) return;
  }
}

void SocketDoor::handle(const FromClient& message) {
  if (const auto* asked = std::get_if<Asked>(&message.what)) return execute(message.client, *asked);
  subscriptions_.erase(message.client);
}

void SocketDoor::execute(ClientNumber client, const Asked& asked) {
  const auto executeAll = [&] {
    for (const auto& request : asked.requests) {
      if (request) {
        execute(client, request.value());
      } else {
        post({client, request.error()});
      }
    }
  };
  if (asked.isBundle) {
    const Control::Bundle bundle(control_);
    executeAll();
  } else {
    executeAll();
  }
  post({client, Executed{}});
}

void SocketDoor::execute(ClientNumber client, const Request& request) {
  if (const auto* subscription = std::get_if<Subscribe>(&request.command))
    subscriptions_[client] = *subscription;
  if (std::holds_alternative<Unsubscribe>(request.command)) subscriptions_.erase(client);
  control_.execute(request.command, {client, request.gesture},
                   [self = self_, client, command = request.command, id = request.id](const Answer& answer) {
                     if (*self != nullptr) (*self)->post({client, Answered{command, id, answer}});
                   });
}

void SocketDoor::tell(const Event& event) {
  const bool isWanted = std::holds_alternative<Meters>(event) ? wantsMeters() : wantsChanges();
  if (!isWanted) return;
  if (exchange_->countToClients() <= kMostWithEvents) {
    post({0, std::make_shared<const Event>(event)});
    return;
  }
  subscriptions_.clear();
  post({0, DropAll{}});
}

void SocketDoor::post(ToClient message) {
  exchange_->send(std::move(message));
  isPosted_ = true;
}

void SocketDoor::send(Time /*now*/) {
  if (std::exchange(isPosted_, false)) server_->wake();
}

std::optional<Door::Time> SocketDoor::due(Time now) const {
  if (isPosted_) return now;
  return isCongested() ? std::optional(now + std::chrono::milliseconds(1)) : std::nullopt;
}

bool SocketDoor::isCongested() const noexcept {
  return exchange_->countToClients() > kMostToClients;
}

bool SocketDoor::anyWants(bool Subscribe::*what) const {
  return std::any_of(subscriptions_.begin(), subscriptions_.end(),
                     [what](const auto& each) { return each.second.*what; });
}

bool isBuiltIn() noexcept {
  return true;
}

Result<OpenDoor, Failure> openDoor(Control& control, const DoorConfig& config) {
  auto exchange = std::make_unique<Exchange>();
  auto opened = Server::open(config, *exchange);
  if (!opened) return opened.error();
  auto server = std::move(opened).value();
  const ListenAddress address = server->address();
  return OpenDoor{std::make_unique<SocketDoor>(control, std::move(exchange), std::move(server)), address};
}

}  // namespace tolvane::ctl::http
