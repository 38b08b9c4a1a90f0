#include "ctl/http/client.h"

#include <algorithm>
#include <utility>

#include <libwebsockets.h>
#include <sys/socket.h>

namespace tolvane::ctl::http {

namespace {

using control::decodeRequests;
using control::Dropped;
using control::encodeWelcome;
using control::Hello;
using control::kLargestMessageBytes;
using control::Request;
using control::RequestBundle;
using control::RequestError;
using control::Subscribe;
using control::Unsubscribe;

}  // namespace

Frame frameOf(std::string_view text) {
  auto frame = std::make_shared<std::string>(LWS_PRE, '\0');
  frame->append(text);
  return frame;
}

Client::Client(lws* socket, ClientNumber number, const Shared& shared)
    : socket_(socket), number_(number), shared_(shared), isTrusted_(shared.token == nullptr) {
  socklen_t length = sizeof address_;
  ::getpeername(lws_get_socket_fd(socket), reinterpret_cast<sockaddr*>(&address_), &length);
  if (!isTrusted_) lws_set_timeout(socket_, PENDING_TIMEOUT_USER_REASON_BASE, kPatienceSeconds);
  queue(frameOf(encodeWelcome("tolvanectl " TOLVANE_VERSION, !isTrusted_)));
}

bool Client::receive(std::string_view part, bool isLast, Time now) {
  if (isEnding_) return true;
  if (text_.size() + part.size() > kLargestMessageBytes) {
    end(LWS_CLOSE_STATUS_MESSAGE_TOO_LARGE, "the message is larger than 64 KiB");
    return true;
  }
  text_ += part;
  return !isLast || take(std::exchange(text_, {}), now);
}

bool Client::take(const std::string& text, Time now) {
  if (!isTrusted_ && !strange_.take(now)) return false;
  if (!messages_.take(now)) return !complaints_.take(now) || refuse("too many messages; some are ignored");
  auto bundle = decodeRequests(text);
  if (!bundle) return refuse(bundle.error().text);
  RequestBundle requests = std::move(bundle).value();
  filter(requests, now);
  post(std::move(requests), text.find_first_of("[{") == text.find('['), text.size());
  return true;
}

void Client::filter(RequestBundle& bundle, Time now) {
  const std::size_t others = bundle.empty() ? 0 : bundle.size() - 1;  // than the one that has been counted
  const bool isTooMuch = !messages_.take(now, others);
  for (auto& request : bundle) {
    if (!request) continue;
    std::string why = isTooMuch ? "too many messages" : refusalOf(request.value(), now);
    if (!why.empty())
      request = RequestError{std::move(why), nameOf(request.value().command), request.value().id};
  }
}

std::string Client::refusalOf(const Request& request, Time now) {
  if (const auto* hello = std::get_if<Hello>(&request.command)) return refusalOf(*hello, now);
  if (!isTrusted_) return "say hello with the token first";
  if (takesLong(request.command) && !slow_.take(now)) return "too many of these; 10 a second are taken";
  return {};
}

std::string Client::refusalOf(const Hello& hello, Time now) {
  if (shared_.token == nullptr) return {};
  // Guesses beyond the rate are refused unread. The rate is the machine's, whatever its number of sockets.
  TokenBucket& guesses = shared_.hosts.find(address_, now).guesses;
  if (!guesses.take(now)) return "too many attempts; wait a few seconds";
  if (!shared_.token->matches(hello.token)) return "the token is wrong";
  guesses.giveBack();
  if (!std::exchange(isTrusted_, true)) lws_set_timeout(socket_, NO_PENDING_TIMEOUT, 0);
  return {};
}

bool Client::refuse(const std::string& why) {
  queue(frameOf(encodeAnswer(RequestError{why, {}, {}})));
  return true;
}

void Client::post(RequestBundle bundle, bool isBundle, std::size_t bytes) {
  constexpr std::size_t kOverhead = 256;
  asked_.push_back(bytes + kOverhead);
  askedBytes_ += asked_.back();
  shared_.exchange.send(FromClient{number_, Asked{std::move(bundle), isBundle}});
  if (askedBytes_ < kMostAskedBytes || isHeld_) return;
  isHeld_ = true;
  lws_rx_flow_control(socket_, 0);
}

void Client::noteExecuted() {
  askedBytes_ -= asked_.front();
  asked_.pop_front();
  if (!isHeld_ || askedBytes_ > kMostAskedBytes / 2) return;
  isHeld_ = false;
  lws_rx_flow_control(socket_, 1);
}

void Client::deliver(const ToClient& message) {
  if (std::holds_alternative<Executed>(message.what)) return noteExecuted();
  if (const auto* error = std::get_if<RequestError>(&message.what))
    return queue(frameOf(encodeAnswer(*error)));
  const auto* answered = std::get_if<Answered>(&message.what);
  if (answered == nullptr) return;
  if (const auto* subscription = std::get_if<Subscribe>(&answered->command)) wants_ = *subscription;
  if (std::holds_alternative<Unsubscribe>(answered->command)) wants_ = {false, false};
  queue(frameOf(encodeAnswer(answered->command, answered->id, answered->answer)));
}

void Client::deliver(const Frame& event, bool Subscribe::*wanted) {
  if (wants(wanted)) queue(event, wanted == &Subscribe::meters);
}

void Client::queue(Frame frame, bool isMeters) {
  if (isEnding_) return;
  const auto older = isMeters ? std::find_if(waiting_.begin(), waiting_.end(),
                                             [](const Waiting& each) { return each.isMeters; })
                              : waiting_.end();
  if (older != waiting_.end()) {
    waitingBytes_ = waitingBytes_ - older->frame->size() + frame->size();
    older->frame = std::move(frame);
    return;
  }
  if (!waiting_.empty() && waitingBytes_ + frame->size() > kLongestQueueBytes) return drop();
  waitingBytes_ += frame->size();
  waiting_.push_back({std::move(frame), isMeters});
  lws_callback_on_writable(socket_);
}

void Client::drop() {
  if (isEnding_) return;
  waiting_.clear();
  waiting_.push_back({frameOf(encodeEvent(Dropped{"messages came faster than they were read"})), false});
  end(LWS_CLOSE_STATUS_POLICY_VIOLATION, "too slow");
}

void Client::end(int closeCode, std::string reason) {
  if (std::exchange(isEnding_, true)) return;
  closeCode_ = closeCode;
  closeReason_ = std::move(reason);
  lws_set_timeout(socket_, PENDING_TIMEOUT_USER_REASON_BASE, kPatienceSeconds);
  lws_callback_on_writable(socket_);
}

void Client::kill() {
  isKilled_ = true;
  lws_set_timeout(socket_, PENDING_TIMEOUT_USER_REASON_BASE, LWS_TO_KILL_ASYNC);
}

bool Client::write() {
  constexpr int kMostAtOnce = 64;  // so that others get their turn
  for (int count = 0; count < kMostAtOnce && !waiting_.empty(); ++count) {
    if (!writeNext()) return false;
    if (lws_send_pipe_choked(socket_) != 0) break;
  }
  if (!waiting_.empty()) {
    lws_callback_on_writable(socket_);
    return true;
  }
  if (!isEnding_) return true;
  lws_close_reason(socket_, static_cast<lws_close_status>(closeCode_),
                   reinterpret_cast<unsigned char*>(closeReason_.data()), closeReason_.size());
  return false;
}

bool Client::writeNext() {
  const Frame frame = std::move(waiting_.front().frame);
  waiting_.pop_front();
  waitingBytes_ -= std::min(waitingBytes_, frame->size());
  const std::size_t size = frame->size() - LWS_PRE;
  const int count =
      lws_write(socket_, reinterpret_cast<unsigned char*>(frame->data()) + LWS_PRE, size, LWS_WRITE_TEXT);
  return count >= static_cast<int>(size);
}

}  // namespace tolvane::ctl::http
