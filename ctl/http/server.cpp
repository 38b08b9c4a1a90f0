#include "ctl/http/server.h"

#include <algorithm>
#include <utility>

#include <libwebsockets.h>
#include <unistd.h>

#include "ctl/http/access.h"
#include "ctl/http/page_reply.h"
#include "ctl/process/early_end.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl::http {

namespace {

using control::Event;
using control::Meters;
using control::Subscribe;

constexpr int kAcceptsAtOnce = 16;
constexpr int kMessagesAtOnce = 256;
constexpr lws_usec_t kFarewellUs = 300'000;
/// For the request of a connection.
constexpr unsigned kRequestSeconds = 10;
/// A client whose machine is gone without a word: asked after ten seconds of silence, given up after 30.
constexpr lws_retry_bo_t kSilence = {.retry_ms_table = nullptr,
                                     .retry_ms_table_count = 0,
                                     .conceal_count = 0,
                                     .secs_since_valid_ping = 10,
                                     .secs_since_valid_hangup = 30,
                                     .jitter_percent = 0};
constexpr const char* kListenerProtocol = "listener";

}  // namespace

/// What the library calls.
struct Server::Library {
  static int call(lws* socket, lws_callback_reasons reason, void* user, void* in, std::size_t length) {
    auto& server = *static_cast<Server*>(lws_context_user(lws_get_context(socket)));
    auto* const session = static_cast<Session*>(user);
    const std::string_view text(static_cast<const char*>(in), in == nullptr ? 0 : length);
    switch (reason) {
      case LWS_CALLBACK_HTTP:
        return beginReply(socket, text, session->sent);
      case LWS_CALLBACK_HTTP_WRITEABLE:
        return continueReply(socket, session->sent);
      case LWS_CALLBACK_HTTP_CONFIRM_UPGRADE:
        return server.confirmUpgrade(socket, in == nullptr ? "" : static_cast<const char*>(in));
      case LWS_CALLBACK_ESTABLISHED:
        server.greet(socket, *session);
        return 0;
      case LWS_CALLBACK_RECEIVE:
        return server.receive(socket, *session, text);
      case LWS_CALLBACK_SERVER_WRITEABLE:
        return session->client->write() ? 0 : -1;
      case LWS_CALLBACK_CLOSED:
        server.sayGoodbye(*session);
        return 0;
      case LWS_CALLBACK_WSI_DESTROY:
        server.forgetVisitor(socket);
        return 0;
      case LWS_CALLBACK_EVENT_WAIT_CANCELLED:
        server.distribute();
        return 0;
      default:
        return lws_callback_http_dummy(socket, reason, user, in, length);
    }
  }

  static int callListener(lws* socket, lws_callback_reasons reason, void* /*user*/, void* /*in*/,
                          std::size_t /*length*/) {
    if (reason == LWS_CALLBACK_RAW_RX_FILE)
      static_cast<Server*>(lws_context_user(lws_get_context(socket)))->acceptAll();
    return 0;
  }

  struct Timer {
    lws_sorted_usec_list_t list;  // must come first
    Server* server;
  };
  static void isOver(lws_sorted_usec_list_t* timer) {
    reinterpret_cast<Timer*>(timer)->server->isOver_ = true;
  }

  static lws_context_creation_info info(Server& server, const lws_protocols* protocols) {
    lws_context_creation_info info{};
    info.port = CONTEXT_PORT_NO_LISTEN_SERVER;
    info.protocols = protocols;
    info.user = &server;
    info.alpn = "http/1.1";
    info.timeout_secs = kRequestSeconds;
    info.keepalive_timeout = static_cast<int>(kRequestSeconds);
    info.retry_and_idle_policy = &kSilence;
    // Descriptors: clients, visitors, and a few of the library's own.
    info.fd_limit_per_thread = kMostClients + 2 * kMostVisitors + 16;
    info.max_http_header_pool = kMostVisitors;
    info.options = LWS_SERVER_OPTION_EXPLICIT_VHOSTS | LWS_SERVER_OPTION_VALIDATE_UTF8;
    return info;
  }
  static const lws_protocols* protocols() {
    static const lws_protocols kProtocols[] = {
        {"tolvane", &Library::call, sizeof(Session), 4096, 0, nullptr, 0},
        {kListenerProtocol, &Library::callListener, 0, 0, 0, nullptr, 0},
        {nullptr, nullptr, 0, 0, 0, nullptr, 0},
    };
    return kProtocols;
  }
};

Result<std::unique_ptr<Server>, Failure> Server::open(const DoorConfig& config, Exchange& exchange) {
  const auto listener = listenAt(config.address);
  if (!listener) return listener.error();
  std::unique_ptr<Server> server(new Server(config, exchange, listener.value()));
  if (server->isStarted(config)) return server;
  if (!config.tls) return Failure{"HTTP at " + config.address.text() + ": cannot be served"};
  return Failure{"TLS: the certificate " + printable(config.tls->certificate) + " and the key " +
                 printable(config.tls->key) + " cannot be used"};
}

Server::Server(const DoorConfig& config, Exchange& exchange, const Listener& listener)
    : listener_(listener), token_(config.token), exchange_(exchange) {}

bool Server::isStarted(const DoorConfig& config) {
  lws_set_log_level(0, nullptr);
  lws_context_creation_info info = Library::info(*this, Library::protocols());
  if (config.tls) {
    info.options |= LWS_SERVER_OPTION_DO_SSL_GLOBAL_INIT;
    info.ssl_cert_filepath = config.tls->certificate.c_str();
    info.ssl_private_key_filepath = config.tls->key.c_str();
  }
  context_ = lws_create_context(&info);
  if (context_ == nullptr) return false;
  vhost_ = lws_create_vhost(context_, &info);
  if (vhost_ == nullptr) return false;
  lws_sock_file_fd_type descriptor{};
  descriptor.filefd = listener_.socket;
  if (lws_adopt_descriptor_vhost(vhost_, LWS_ADOPT_RAW_FILE_DESC, descriptor, kListenerProtocol, nullptr) ==
      nullptr)
    return false;
  const SignalsHeld held;
  thread_ = std::thread([this] { serve(); });
  return true;
}

Server::~Server() {
  if (thread_.joinable()) {
    isEndAsked_ = true;
    wake();
    thread_.join();
  } else {
    ::close(listener_.socket);
  }
  if (context_ != nullptr) lws_context_destroy(context_);
}

void Server::wake() noexcept {
  lws_cancel_service(context_);
}

void Server::serve() {
  Library::Timer timer{{}, this};
  while (!isOver_ && lws_service(context_, 0) >= 0) {
    if (isEndAsked_ && !isEnding_) {
      lws_sul_schedule(context_, 0, &timer.list, &Library::isOver, kFarewellUs);
      beginEnd();
    }
    if (isEnding_ && clients_.empty()) break;
  }
  lws_sul_schedule(context_, 0, &timer.list, &Library::isOver, LWS_SET_TIMER_USEC_CANCEL);
}

void Server::beginEnd() {
  isEnding_ = true;
  for (const auto& [number, client] : clients_) client->end(LWS_CLOSE_STATUS_GOINGAWAY, "the run has ended");
}

void Server::acceptAll() {
  for (int count = 0; count < kAcceptsAtOnce; ++count) {
    const int accepted = acceptNext(listener_.socket);
    if (accepted < 0) return;
    lws* const socket = lws_adopt_socket_vhost(vhost_, accepted);
    if (socket == nullptr) continue;
    visitors_.push_back(socket);
    if (visitors_.size() <= kMostVisitors) continue;
    lws* const oldest = visitors_.front();
    visitors_.pop_front();
    lws_set_timeout(oldest, PENDING_TIMEOUT_USER_REASON_BASE, LWS_TO_KILL_SYNC);
  }
}

void Server::forgetVisitor(lws* socket) {
  visitors_.remove(socket);
}

int Server::confirmUpgrade(lws* socket, std::string_view protocol) {
  const auto refuse = [socket](unsigned status, const char* why) {
    return lws_return_http_status(socket, status, why) < 0 ? -1 : 1;
  };
  char path[300];
  char host[300];
  char origin[300];
  if (protocol != "websocket" || headerOf(socket, WSI_TOKEN_GET_URI, path) != "/ws")
    return refuse(HTTP_STATUS_NOT_FOUND, nullptr);
  if (!isOwnHost(headerOf(socket, WSI_TOKEN_HOST, host)))
    return refuse(HTTP_STATUS_FORBIDDEN, "Use this machine's address or its own name.");
  const bool hasOrigin = lws_hdr_total_length(socket, WSI_TOKEN_ORIGIN) > 0;
  const std::string_view itsOrigin = headerOf(socket, WSI_TOKEN_ORIGIN, origin);
  if (hasOrigin && (itsOrigin.empty() || !isOwnOrigin(itsOrigin, host)))
    return refuse(HTTP_STATUS_FORBIDDEN, "Pages from elsewhere may not connect.");
  return makeRoom() ? 0 : refuse(HTTP_STATUS_SERVICE_UNAVAILABLE, "There are 16 clients already.");
}

bool Server::makeRoom() {
  if (isEnding_) return false;
  const auto stays = [](const auto& each) { return !each.second->isKilled(); };
  const auto staying = std::count_if(clients_.begin(), clients_.end(), stays);
  if (staying < static_cast<std::ptrdiff_t>(kMostClients)) return true;
  // The oldest stranger goes: who knows the token shall not be kept out by those who do not.
  const auto stranger = std::find_if(clients_.begin(), clients_.end(), [&](const auto& each) {
    return stays(each) && each.second->isStranger();
  });
  if (stranger == clients_.end()) return false;
  stranger->second->kill();
  return true;
}

void Server::greet(lws* socket, Session& session) {
  forgetVisitor(socket);
  const ClientNumber number = ++lastNumber_;
  auto client = std::make_unique<Client>(socket, number,
                                         Client::Shared{exchange_, token_ ? &*token_ : nullptr, hosts_});
  session.client = client.get();
  clients_.emplace(number, std::move(client));
}

void Server::sayGoodbye(Session& session) {
  const auto gone = std::find_if(clients_.begin(), clients_.end(),
                                 [&](const auto& each) { return each.second.get() == session.client; });
  if (gone == clients_.end()) return;
  exchange_.send(FromClient{gone->first, Gone{}});
  clients_.erase(gone);
  session.client = nullptr;
}

int Server::receive(lws* socket, Session& session, std::string_view part) {
  const bool isLast = lws_is_final_fragment(socket) != 0 && lws_remaining_packet_payload(socket) == 0;
  if (lws_frame_is_binary(socket) != 0) {
    session.client->end(LWS_CLOSE_STATUS_UNACCEPTABLE_OPCODE, "send texts");
    return 0;
  }
  return session.client->receive(part, isLast, std::chrono::steady_clock::now()) ? 0 : -1;
}

void Server::distribute() {
  for (int count = 0; count < kMessagesAtOnce; ++count) {
    const auto message = exchange_.nextToClient();
    if (!message) return;
    if (const auto* event = std::get_if<SharedEvent>(&message->what)) {
      broadcast(**event);
      continue;
    }
    if (std::holds_alternative<DropAll>(message->what)) {
      dropSubscribers();
      continue;
    }
    const auto client = clients_.find(message->client);
    if (client != clients_.end()) client->second->deliver(*message);
  }
  wake();  // for the others, once what has been queued is written
}

void Server::dropSubscribers() {
  for (const auto& [number, client] : clients_) {
    if (client->wants(&Subscribe::changes) || client->wants(&Subscribe::meters)) client->drop();
  }
}

void Server::broadcast(const Event& event) {
  const auto wanted = std::holds_alternative<Meters>(event) ? &Subscribe::meters : &Subscribe::changes;
  Frame frame;
  for (const auto& [number, client] : clients_) {
    if (!client->wants(wanted)) continue;
    if (!frame) frame = frameOf(encodeEvent(event));
    client->deliver(frame, wanted);
  }
}

}  // namespace tolvane::ctl::http
