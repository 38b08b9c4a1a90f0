#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "ctl/control/command.h"
#include "ctl/doors/hosts.h"
#include "ctl/doors/token.h"
#include "ctl/doors/token_bucket.h"
#include "ctl/http/exchange.h"

struct lws;

namespace tolvane::ctl::http {

/// A text to send, with room in front for the library's frame. Several clients may share it.
using Frame = std::shared_ptr<std::string>;
[[nodiscard]] Frame frameOf(std::string_view text);

/// A WebSocket that is open. Everything here is called by the server's thread.
class Client {
 public:
  using Time = TokenBucket::Time;

  /// Bytes that may wait for a client. One text of any length may wait by itself.
  static constexpr std::size_t kLongestQueueBytes = std::size_t{4} << 20U;
  /// Bytes of requests that wait for the model; nothing is read from the client beyond.
  static constexpr std::size_t kMostAskedBytes = std::size_t{256} << 10U;
  /// In which a stranger must say the token, and a client that is dropped must close.
  static constexpr int kPatienceSeconds = 10;

  /// What all clients share. `token` null: none is needed.
  struct Shared {
    Exchange& exchange;
    const Token* token;
    Hosts& hosts;
  };

  Client(lws* socket, ClientNumber number, const Shared& shared);

  /// Takes a part of a text. False: the connection must be closed now.
  [[nodiscard]] bool receive(std::string_view part, bool isLast, Time now);
  /// Sends some of the texts that wait. False: the connection must be closed now.
  [[nodiscard]] bool write();

  /// Takes what the model says to this client.
  void deliver(const ToClient& message);
  /// Takes an event, if the client wants it. Meters take the place of older ones that still wait.
  void deliver(const Frame& event, bool control::Subscribe::*wanted);
  /// Forgets what waits, says that it was too much, and closes the connection.
  void drop();
  /// Closes the connection when what waits has been sent.
  void end(int closeCode, std::string reason);
  /// Closes the connection at once.
  void kill();

  [[nodiscard]] bool isStranger() const noexcept { return !isTrusted_; }
  /// True after kill(): the library closes the connection in its next turn.
  [[nodiscard]] bool isKilled() const noexcept { return isKilled_; }
  [[nodiscard]] bool wants(bool control::Subscribe::*what) const noexcept { return wants_.*what; }

 private:
  struct Waiting {
    Frame frame;
    bool isMeters;
  };

  [[nodiscard]] bool take(const std::string& text, Time now);
  /// Replaces requests that this client may not make by errors; all of them if they exceed its rate.
  void filter(control::RequestBundle& bundle, Time now);
  /// Why the request is refused; empty: it is not.
  [[nodiscard]] std::string refusalOf(const control::Request& request, Time now);
  [[nodiscard]] std::string refusalOf(const control::Hello& hello, Time now);
  [[nodiscard]] bool refuse(const std::string& why);
  void post(control::RequestBundle bundle, bool isBundle, std::size_t bytes);
  void noteExecuted();
  void queue(Frame frame, bool isMeters = false);
  [[nodiscard]] bool writeNext();

  lws* socket_;
  ClientNumber number_;
  Shared shared_;
  sockaddr_storage address_{};
  std::string text_;  // that has come in part
  std::deque<Waiting> waiting_;
  std::size_t waitingBytes_ = 0;
  std::deque<std::size_t> asked_;  // the bytes of texts that the model has not executed yet
  std::size_t askedBytes_ = 0;
  control::Subscribe wants_{false, false};
  TokenBucket messages_{Hosts::kRate, Hosts::kBurst};
  TokenBucket complaints_{1.0, 1.0};
  TokenBucket slow_{10.0, 10.0};
  TokenBucket strange_{1.0, 10.0};  // texts of a stranger
  bool isTrusted_;
  bool isHeld_ = false;  // nothing is read
  bool isEnding_ = false;
  bool isKilled_ = false;
  int closeCode_ = 0;
  std::string closeReason_;
};

}  // namespace tolvane::ctl::http
