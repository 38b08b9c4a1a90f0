#include "ctl/osc/udp_door.h"

#include <cerrno>
#include <span>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "ctl/osc/commands.h"
#include "ctl/osc/messages.h"

namespace tolvane::ctl::osc {

namespace {

using control::Answer;
using control::Command;
using control::Control;
using control::Done;
using control::Dropped;
using control::Event;
using control::Hello;
using control::Meters;
using control::Refusal;
using control::Subscribe;
using control::Unsubscribe;

constexpr std::size_t kLargestDatagram = std::size_t{64} << 10U;
constexpr int kMostAtOnce = 64;
constexpr std::chrono::milliseconds kLongestTurn{1};
/// Answers that may wait; nothing is received beyond.
constexpr std::size_t kMostAnswers = 4096;
/// A longer address is not repeated in an answer.
constexpr std::size_t kLongestAddress = 200;

/// Measures a turn by its own clock, because `now` is the time of its begin.
class Turn {
 public:
  [[nodiscard]] bool isOver() {
    return ++count_ > kMostAtOnce || std::chrono::steady_clock::now() - begin_ > kLongestTurn;
  }

 private:
  Door::Time begin_ = std::chrono::steady_clock::now();
  int count_ = 0;
};

std::vector<Datagram> datagramsOf(const std::vector<Message>& messages) {
  std::vector<Datagram> datagrams;
  for (std::string& packet : encodePackets(messages))
    datagrams.push_back(std::make_shared<const std::string>(std::move(packet)));
  return datagrams;
}

/// True for what a door itself sends. Two doors that answered it, or one that hears itself, would never end.
bool isOfADoor(const std::string& address) {
  return address.ends_with("/error") || address.ends_with("/reply") ||
         address.find("/reply/") != std::string::npos || address.starts_with("/tolvane/event/");
}

socklen_t lengthOf(const sockaddr_storage& address) {
  return address.ss_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
}

sockaddr_storage withPort(sockaddr_storage address, std::optional<std::uint16_t> port) {
  if (!port) return address;
  if (address.ss_family == AF_INET6) {
    reinterpret_cast<sockaddr_in6&>(address).sin6_port = htons(*port);
  } else {
    reinterpret_cast<sockaddr_in&>(address).sin_port = htons(*port);
  }
  return address;
}

Result<OpenDoor, Failure> bound(Control& control, int socket, const ListenAddress& address,
                                std::optional<Token> token) {
  constexpr int kBufferBytes = 1 << 20;
  // Failures are ignored: the system's own size works too.
  ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &kBufferBytes, sizeof kBufferBytes);
  ListenAddress actual;
  actual.length = sizeof actual.address;
  if (::bind(socket, reinterpret_cast<const sockaddr*>(&address.address), address.length) != 0 ||
      ::getsockname(socket, reinterpret_cast<sockaddr*>(&actual.address), &actual.length) != 0) {
    const Failure failure = systemFailure("OSC at " + address.text(), errno);
    ::close(socket);
    return failure;
  }
  return OpenDoor{std::make_unique<UdpDoor>(control, socket, std::move(token)), actual};
}

}  // namespace

bool isBuiltIn() noexcept {
  return true;
}

Result<OpenDoor, Failure> openDoor(Control& control, const ListenAddress& address,
                                   std::optional<Token> token) {
  const int socket = ::socket(address.address.ss_family, SOCK_DGRAM, 0);
  if (socket < 0) return systemFailure("OSC at " + address.text(), errno);
  ::fcntl(socket, F_SETFD, FD_CLOEXEC);
  ::fcntl(socket, F_SETFL, O_NONBLOCK);
  return bound(control, socket, address, std::move(token));
}

UdpDoor::UdpDoor(Control& control, int socket, std::optional<Token> token)
    : control_(control),
      socket_(socket),
      token_(std::move(token)),
      buffer_(kLargestDatagram),
      self_(std::make_shared<UdpDoor*>(this)) {
  control_.add(*this);
}

UdpDoor::~UdpDoor() {
  *self_ = nullptr;
  control_.remove(*this);
  ::close(socket_);
}

void UdpDoor::receive(Time now) {
  subscribers_.expire(now);
  mayBeMore_ = false;
  for (Turn turn; !turn.isOver();) {
    if (answers_.size() >= kMostAnswers) return;
    sockaddr_storage from{};
    socklen_t length = sizeof from;
    const ssize_t count =
        ::recvfrom(socket_, buffer_.data(), buffer_.size(), 0, reinterpret_cast<sockaddr*>(&from), &length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return;
    handle({buffer_.data(), static_cast<std::size_t>(count)}, from, now);
  }
  mayBeMore_ = true;
}

void UdpDoor::handle(std::string_view datagram, const sockaddr_storage& from, Time now) {
  Hosts::Host& host = hosts_.find(from, now);
  const Sender sender{from, host, now};
  if (!host.messages.take(now)) return complain(sender);
  const auto packet = decodePacket(datagram);
  if (!packet) return refuse(sender, "/tolvane", packet.error());
  const std::vector<Message>& messages = packet.value().messages;
  if (messages.empty()) return;
  if (!packet.value().isBundle) return handle(messages.front(), sender);
  std::span<const Message> bundled = messages;
  if (isStranger(sender)) {
    // A stranger's datagram gets one answer at most; who begins with the token is none any more.
    handle(bundled.front(), sender);
    if (isStranger(sender)) return;
    bundled = bundled.subspan(1);
  }
  if (!host.messages.take(now, messages.size() - 1)) return complain(sender);
  const Control::Bundle bundle(control_);
  for (const Message& message : bundled) handle(message, sender);
}

void UdpDoor::complain(const Sender& sender) {
  if (sender.host.complaints.take(sender.now))
    refuse(sender, "/tolvane", "too many messages; some are ignored");
}

void UdpDoor::handle(const Message& message, const Sender& sender) {
  if (isOfADoor(message.address)) return;
  const std::string address = message.address.size() <= kLongestAddress ? message.address : "/tolvane";
  if (message.address == "/tolvane/hello") return hello(message, sender);
  if (isStranger(sender)) return refuse(sender, address, "say /tolvane/hello TOKEN first");
  const auto command = commandOf(message);
  if (!command) return refuse(sender, address, command.error());
  if (takesLong(command.value()) && !sender.host.slow.take(sender.now))
    return refuse(sender, address, "too many of these; 10 a second are taken");
  if (const auto* subscription = std::get_if<Subscribe>(&command.value())) {
    const sockaddr_storage to = withPort(sender.address, eventPortOf(message));
    if (!subscribers_.add(to, *subscription, sender.now))
      return refuse(sender, address, "there are 16 subscribers already");
  }
  if (std::holds_alternative<Unsubscribe>(command.value()))
    subscribers_.remove(withPort(sender.address, eventPortOf(message)));
  execute(command.value(), address, sender);
}

void UdpDoor::hello(const Message& message, const Sender& sender) {
  const auto refused = [&](const std::string& why) { refuse(sender, message.address, why); };
  const auto command = commandOf(message);
  if (!command) return refused(command.error());
  if (token_) {
    // Guesses beyond the rate are refused unread.
    if (!sender.host.guesses.take(sender.now)) return refused("too many attempts; wait a few seconds");
    if (!token_->matches(std::get<Hello>(command.value()).token)) return refused("the token is wrong");
    sender.host.guesses.giveBack();
    if (!hosts_.trust(sender.host)) return refused("there are 16 clients already");
  }
  answer(sender.address, message.address, Done{control_.serial()});
}

bool UdpDoor::isStranger(const Sender& sender) const {
  return token_ && !sender.host.isTrusted;
}

void UdpDoor::refuse(const Sender& sender, const std::string& address, const std::string& why) {
  if (isStranger(sender) && !strangers_.take(sender.now)) return;
  answer(sender.address, address, Refusal{why});
}

void UdpDoor::execute(const Command& command, const std::string& address, const Sender& sender) {
  control_.execute(command, control::Sender{},
                   [self = self_, to = sender.address, address](const Answer& result) {
                     if (*self != nullptr) (*self)->answer(to, address, result);
                   });
}

void UdpDoor::answer(const sockaddr_storage& to, const std::string& address, const Answer& answer) {
  for (Datagram& datagram : datagramsOf(answerMessages(address, answer)))
    answers_.push_back({to, std::move(datagram)});
}

void UdpDoor::tell(const Event& event) {
  const auto wanted = std::holds_alternative<Meters>(event) ? &Subscribe::meters : &Subscribe::changes;
  if (!subscribers_.anyWants(wanted)) return;
  const auto slow = subscribers_.queue(datagramsOf(eventMessages(event)), wanted);
  if (slow.empty()) return;
  const auto farewell = datagramsOf(eventMessages(Dropped{"events came faster than they could be sent"}));
  for (const sockaddr_storage& to : slow) answers_.push_back({to, farewell.front()});
}

void UdpDoor::send(Time now) {
  subscribers_.expire(now);
  Turn turn;
  while (!answers_.empty()) {
    if (turn.isOver() || !sendNow(answers_.front().to, answers_.front().datagram)) return;
    answers_.pop_front();
  }
  // One to each in turn, so that a long queue holds up nobody else's.
  for (bool isSome = true; isSome;) {
    isSome = false;
    for (Subscribers::Subscriber& subscriber : subscribers_.all()) {
      if (subscriber.queue.empty()) continue;
      if (turn.isOver() || !sendNow(subscriber.address, subscriber.queue.front())) return;
      subscriber.queue.pop_front();
      isSome = true;
    }
  }
}

bool UdpDoor::sendNow(const sockaddr_storage& to, const Datagram& datagram) const {
  const ssize_t count = ::sendto(socket_, datagram->data(), datagram->size(), 0,
                                 reinterpret_cast<const sockaddr*>(&to), lengthOf(to));
  // What cannot be sent at all is lost, as on the way.
  return count >= 0 || (errno != EAGAIN && errno != ENOBUFS && errno != EINTR);
}

bool UdpDoor::isSending() const {
  if (!answers_.empty()) return true;
  for (const Subscribers::Subscriber& subscriber : subscribers_.all()) {
    if (!subscriber.queue.empty()) return true;
  }
  return false;
}

std::optional<Door::Time> UdpDoor::due(Time now) const {
  if (mayBeMore_) return now;
  if (isSending()) return now + std::chrono::milliseconds(1);
  return std::nullopt;
}

}  // namespace tolvane::ctl::osc
