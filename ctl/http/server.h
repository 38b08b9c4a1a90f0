#pragma once

#include <atomic>
#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <thread>

#include "base/result.h"
#include "ctl/doors/hosts.h"
#include "ctl/http/client.h"
#include "ctl/http/door.h"
#include "ctl/http/exchange.h"
#include "ctl/http/listener.h"

struct lws_context;
struct lws_vhost;

namespace tolvane::ctl::http {

/// Serves the network on a thread of its own: connections, TLS, the page, and the texts of the WebSockets.
/// Requests go into the exchange; what the model says comes out of it. So nothing that happens on the network
/// takes the main thread's time but the requests themselves.
class Server {
 public:
  static constexpr std::size_t kMostClients = 16;
  /// Connections that are not WebSockets, or not yet. The oldest one goes if there are more.
  static constexpr std::size_t kMostVisitors = 32;

  /// The exchange must outlive the server. Failure: as for openDoor(). [main-thread]
  [[nodiscard]] static Result<std::unique_ptr<Server>, Failure> open(const DoorConfig& config,
                                                                     Exchange& exchange);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  /// Tells the clients that the run ends, and waits for them for a moment. [main-thread]
  ~Server();

  [[nodiscard]] const ListenAddress& address() const noexcept { return listener_.address; }
  /// There is something for clients in the exchange. [any-thread]
  void wake() noexcept;

 private:
  struct Library;
  friend struct Library;
  /// Of a connection, in the library's memory, which is zero at first.
  struct Session {
    Client* client;
    std::size_t sent;  // of the page
  };

  Server(const DoorConfig& config, Exchange& exchange, const Listener& listener);
  [[nodiscard]] bool isStarted(const DoorConfig& config);
  void serve();
  void beginEnd();

  void acceptAll();
  void forgetVisitor(lws* socket);
  /// Returns what the library wants: 0 to go on, more than 0 after an answer of our own.
  [[nodiscard]] int confirmUpgrade(lws* socket, std::string_view protocol);
  [[nodiscard]] bool makeRoom();
  void greet(lws* socket, Session& session);
  void sayGoodbye(Session& session);
  [[nodiscard]] int receive(lws* socket, Session& session, std::string_view part);
  void distribute();
  void broadcast(const control::Event& event);
  void dropSubscribers();

  Listener listener_;
  std::optional<Token> token_;
  Hosts hosts_;
  Exchange& exchange_;
  lws_context* context_ = nullptr;
  lws_vhost* vhost_ = nullptr;
  std::list<lws*> visitors_;  // the oldest first
  std::map<ClientNumber, std::unique_ptr<Client>> clients_;
  ClientNumber lastNumber_ = 0;
  std::atomic<bool> isEndAsked_ = false;
  bool isEnding_ = false;
  bool isOver_ = false;
  std::thread thread_;
};

}  // namespace tolvane::ctl::http
