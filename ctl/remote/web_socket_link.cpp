#include <charconv>
#include <deque>
#include <utility>

#include <libwebsockets.h>

#include "ctl/remote/link.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl::remote {

namespace {

constexpr unsigned kConnectSeconds = 5;

struct Place {
  std::string host;  // IPv6 without brackets
  int port = 0;
};

std::optional<Place> placeOf(const std::string& address) {
  const std::size_t colon = address.rfind(':');
  if (colon == std::string::npos || colon == 0) return std::nullopt;
  Place place{address.substr(0, colon), 0};
  const char* const end = address.data() + address.size();
  const auto [stop, error] = std::from_chars(address.data() + colon + 1, end, place.port);
  if (error != std::errc() || stop != end || place.port < 1 || place.port > 65535) return std::nullopt;
  if (place.host.size() > 2 && place.host.front() == '[' && place.host.back() == ']')
    place.host = place.host.substr(1, place.host.size() - 2);
  return place;
}

class WebSocketLink : public Link {
 public:
  explicit WebSocketLink(const LinkConfig& config) : config_(config) {}
  WebSocketLink(const WebSocketLink&) = delete;
  WebSocketLink& operator=(const WebSocketLink&) = delete;
  ~WebSocketLink() override {
    if (context_ != nullptr) lws_context_destroy(context_);
  }

  [[nodiscard]] std::optional<Failure> connect(const Place& place) {
    if (!isStarted(place)) return failure("cannot connect");
    while (!isOpen_ && problem_.empty()) serve();
    if (isOpen_) return std::nullopt;
    return failure(problem_);
  }

  void send(const std::string& text) override {
    waiting_.push_back(std::string(LWS_PRE, '\0') + text);
    if (socket_ != nullptr) lws_callback_on_writable(socket_);
  }

  [[nodiscard]] Result<std::string, Failure> receive(std::optional<std::chrono::seconds> limit) override {
    isLate_ = false;
    if (limit) setTimer(*limit);
    while (texts_.empty() && problem_.empty() && !isLate_) serve();
    lws_sul_schedule(context_, 0, &timer_.list, &Timer::call, LWS_SET_TIMER_USEC_CANCEL);
    if (!texts_.empty()) {
      std::string text = std::move(texts_.front());
      texts_.pop_front();
      return text;
    }
    return failure(isLate_ ? "does not answer" : problem_);
  }

 private:
  struct Timer {
    lws_sorted_usec_list_t list;  // must come first
    WebSocketLink* link;
    static void call(lws_sorted_usec_list_t* timer) { reinterpret_cast<Timer*>(timer)->link->isLate_ = true; }
  };

  static int call(lws* socket, lws_callback_reasons reason, void* /*user*/, void* in, std::size_t length) {
    auto& link = *static_cast<WebSocketLink*>(lws_context_user(lws_get_context(socket)));
    const std::string_view text(static_cast<const char*>(in), in == nullptr ? 0 : length);
    switch (reason) {
      case LWS_CALLBACK_CLIENT_ESTABLISHED:
        link.isOpen_ = true;
        link.socket_ = socket;
        return 0;
      case LWS_CALLBACK_CLIENT_RECEIVE:
        link.take(text);
        return 0;
      case LWS_CALLBACK_CLIENT_WRITEABLE:
        return link.write();
      case LWS_CALLBACK_CLIENT_CONNECTION_ERROR:
        link.problem_ = "cannot connect" + (text.empty() ? std::string() : " (" + printable(text) + ')');
        return 0;
      case LWS_CALLBACK_WS_PEER_INITIATED_CLOSE:
        if (text.size() > 2) link.problem_ = "closed: " + printable(text.substr(2));
        return 0;
      case LWS_CALLBACK_CLIENT_CLOSED:
        link.socket_ = nullptr;
        if (link.problem_.empty()) link.problem_ = "the connection is lost";
        return 0;
      default:
        return lws_callback_http_dummy(socket, reason, nullptr, in, length);
    }
  }

  [[nodiscard]] bool isStarted(const Place& place) {
    static const lws_protocols kProtocols[] = {{"tolvane", &WebSocketLink::call, 0, 65536, 0, nullptr, 0},
                                               {nullptr, nullptr, 0, 0, 0, nullptr, 0}};
    lws_set_log_level(0, nullptr);
    lws_context_creation_info info{};
    info.port = CONTEXT_PORT_NO_LISTEN;
    info.protocols = kProtocols;
    info.user = this;
    info.timeout_secs = kConnectSeconds;
    info.connect_timeout_secs = kConnectSeconds;
    info.fd_limit_per_thread = 16;
    if (config_.tls) {
      info.options |= LWS_SERVER_OPTION_DO_SSL_GLOBAL_INIT;
      if (!config_.tlsAuthority.empty()) info.client_ssl_ca_filepath = config_.tlsAuthority.c_str();
    }
    context_ = lws_create_context(&info);
    if (context_ == nullptr) return false;
    lws_client_connect_info target{};
    target.context = context_;
    target.address = place.host.c_str();
    target.port = place.port;
    target.path = "/ws";
    target.host = config_.address.c_str();
    target.ssl_connection = config_.tls ? LCCSCF_USE_SSL : 0;
    return lws_client_connect_via_info(&target) != nullptr || !problem_.empty();
  }

  void serve() {
    if (lws_service(context_, 0) < 0 && problem_.empty()) problem_ = "the connection is lost";
  }

  void setTimer(std::chrono::seconds limit) {
    lws_sul_schedule(context_, 0, &timer_.list, &Timer::call,
                     std::chrono::duration_cast<std::chrono::microseconds>(limit).count());
  }

  void take(std::string_view part) {
    text_ += part;
    if (lws_is_final_fragment(socket_) != 0 && lws_remaining_packet_payload(socket_) == 0)
      texts_.push_back(std::exchange(text_, {}));
  }

  int write() {
    if (waiting_.empty()) return 0;
    std::string text = std::move(waiting_.front());
    waiting_.pop_front();
    const std::size_t size = text.size() - LWS_PRE;
    if (lws_write(socket_, reinterpret_cast<unsigned char*>(text.data()) + LWS_PRE, size, LWS_WRITE_TEXT) <
        static_cast<int>(size))
      return -1;
    if (!waiting_.empty()) lws_callback_on_writable(socket_);
    return 0;
  }

  [[nodiscard]] Failure failure(const std::string& what) const { return {about(config_.address, what)}; }

  LinkConfig config_;
  lws_context* context_ = nullptr;
  lws* socket_ = nullptr;
  Timer timer_{{}, this};
  bool isOpen_ = false;
  bool isLate_ = false;
  std::string problem_;  // why the connection is gone; empty: it is not
  std::string text_;     // that has come in part
  std::deque<std::string> texts_;
  std::deque<std::string> waiting_;
};

}  // namespace

bool isBuiltIn() noexcept {
  return true;
}

Result<std::unique_ptr<Link>, Failure> openLink(const LinkConfig& config) {
  const auto place = placeOf(config.address);
  if (!place) return Failure{about(config.address, "is not HOST:PORT"), ExitStatus::usage};
  auto link = std::make_unique<WebSocketLink>(config);
  if (auto failure = link->connect(*place)) return *failure;
  return std::unique_ptr<Link>(std::move(link));
}

}  // namespace tolvane::ctl::remote
