#include "support/pipewire_proxy.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <list>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <poll.h>
#include <spa/pod/builder.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "hal/pipewire/pipewire_headers.h"
#include "support/message_distortion.h"

namespace tolvane::test {

namespace proxied {

constexpr std::size_t kMaxDescriptors = 253;  // the kernel's limit for one message

/// The offset of the memory's number in a message about it: after the message header and the headers of the
/// structure and of the number.
constexpr std::size_t kMemoryIdOffset = sizeof(MessageHeader) + 8 + 8;

union ControlRoom {
  std::array<char, CMSG_SPACE(kMaxDescriptors * sizeof(int))> bytes;
  cmsghdr alignment;
};

inline int connectTo(const std::string& path, bool listen) {
  const int end = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(static_cast<char*>(address.sun_path), sizeof(address.sun_path) - 1);
  const auto* const at = reinterpret_cast<const sockaddr*>(&address);
  const bool isMade = listen ? ::bind(end, at, sizeof(address)) == 0 && ::listen(end, 8) == 0
                             : ::connect(end, at, sizeof(address)) == 0;
  if (!isMade) throw std::runtime_error("the proxy has no socket " + path);
  return end;
}

inline void sendAll(int end, const char* bytes, std::size_t count, std::vector<int>& descriptors) {
  while (count != 0) {
    iovec part{const_cast<char*>(bytes), count};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    ControlRoom room{};
    if (!descriptors.empty()) {
      const std::size_t length = descriptors.size() * sizeof(int);
      message.msg_control = room.bytes.data();
      message.msg_controllen = CMSG_SPACE(length);
      cmsghdr* const control = CMSG_FIRSTHDR(&message);
      control->cmsg_level = SOL_SOCKET;
      control->cmsg_type = SCM_RIGHTS;
      control->cmsg_len = CMSG_LEN(length);
      std::memcpy(CMSG_DATA(control), descriptors.data(), length);
    }
    const ssize_t sent = ::sendmsg(end, &message, MSG_NOSIGNAL);
    for (const int descriptor : descriptors) ::close(descriptor);
    descriptors.clear();
    if (sent < 0) return;  // the other end is gone; the next read from it will show that
    bytes += sent;
    count -= static_cast<std::size_t>(sent);
  }
}

/// One direction of a connection.
struct Way {
  int from = -1;
  int to = -1;
  std::vector<char> bytes = {};  // received and not yet forwarded
  std::deque<int> descriptors = {};

  /// Returns false at the end of the connection.
  bool receive() {
    std::array<char, 65536> block{};
    iovec part{block.data(), block.size()};
    ControlRoom room{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = room.bytes.data();
    message.msg_controllen = room.bytes.size();
    const ssize_t received = ::recvmsg(from, &message, MSG_CMSG_CLOEXEC);
    if (received <= 0) return false;
    bytes.insert(bytes.end(), block.begin(), block.begin() + received);
    for (cmsghdr* control = CMSG_FIRSTHDR(&message); control != nullptr;
         control = CMSG_NXTHDR(&message, control)) {
      std::vector<int> taken((control->cmsg_len - CMSG_LEN(0)) / sizeof(int));
      std::memcpy(taken.data(), CMSG_DATA(control), taken.size() * sizeof(int));
      descriptors.insert(descriptors.end(), taken.begin(), taken.end());
    }
    return true;
  }

  /// Forwards the first message if it is complete. `look` may change its bytes first, then `change` all of
  /// it.
  template <class Look, class Change>
  bool handOn(const Look& look, const Change& change) {
    MessageHeader header;
    if (bytes.size() < sizeof(header)) return false;
    std::memcpy(&header, bytes.data(), sizeof(header));
    if (bytes.size() < header.bytes() || descriptors.size() < header.descriptors) return false;
    look(header, bytes.data());
    std::vector<int> taken(descriptors.begin(), descriptors.begin() + header.descriptors);
    descriptors.erase(descriptors.begin(), descriptors.begin() + header.descriptors);
    std::vector<char> message(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(header.bytes()));
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(header.bytes()));
    change(header, message, taken);
    sendAll(to, message.data(), message.size(), taken);
    return true;
  }
};

struct Connection {
  Way toServer;
  Way toClient;

  void close() {
    for (const Way* const way : {&toServer, &toClient}) {
      ::close(way->from);
      for (const int descriptor : way->descriptors) ::close(descriptor);
    }
  }
};

}  // namespace proxied

using namespace proxied;

struct PipeWireProxy::State {
  std::string folder = std::getenv("XDG_RUNTIME_DIR");
  std::string name = "proxy-" + std::to_string(::getpid());
  std::string path = folder + "/" + name;
  int listener = connectTo(path, true);
  std::list<Connection> open;
  std::atomic<unsigned> connections = 0;
  std::atomic<bool> isMisnumbering = false;
  std::atomic<bool> isLosing = false;
  std::atomic<std::uint32_t> refusedNode = SPA_ID_INVALID;
  std::atomic<bool> isNonsenseDue = false;
  std::atomic<int> dueError = 0;
  std::mutex mutex;
  std::vector<std::string> linkPorts;
  std::optional<MessageDistortion> distortion;  // set before the first connection
  std::atomic<bool> isDistorting = false;
  std::atomic<bool> isDropping = false;
  std::atomic<bool> isEnding = false;
  std::thread thread{[this] { run(); }};

  void run() {
    while (!isEnding) {
      std::vector<pollfd> ends{{listener, POLLIN, 0}};
      for (const Connection& connection : open) {
        ends.push_back({connection.toServer.from, POLLIN, 0});
        ends.push_back({connection.toClient.from, POLLIN, 0});
      }
      ::poll(ends.data(), ends.size(), 5);
      serve(ends);
      if (ends[0].revents != 0) accept();
    }
  }

  void accept() {
    const int client = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    const int server = connectTo(folder + "/pipewire-0", false);
    open.push_back({{.from = client, .to = server}, {.from = server, .to = client}});
    ++connections;
  }

  void serve(const std::vector<pollfd>& ends) {
    const bool drops = isDropping.exchange(false);
    std::size_t at = 1;
    for (auto connection = open.begin(); connection != open.end(); at += 2) {
      bool isOpen = ends[at].revents == 0 || connection->toServer.receive();
      isOpen = isOpen && (ends[at + 1].revents == 0 || connection->toClient.receive());
      while (connection->toServer.handOn(
          [&](const auto& header, char* bytes) {
            noteLink(header, bytes);
            refuse(header, bytes);
          },
          [](const auto& /*header*/, auto& /*message*/, auto& /*descriptors*/) {})) {
      }
      while (connection->toClient.handOn([&](const auto& header, char* bytes) { misnumber(header, bytes); },
                                         [&](const auto& header, auto& message, auto& descriptors) {
                                           lose(header, message);
                                           if (isDistorting) distortion->change(message, descriptors);
                                         })) {
      }
      if (drops) isOpen = false;
      if (isNonsenseDue.exchange(false)) sendNonsense(connection->toClient.to);
      if (const int result = dueError.exchange(0)) sendCoreError(connection->toClient.to, result);
      if (!isOpen) connection->close();
      connection = isOpen ? std::next(connection) : open.erase(connection);
    }
  }

  /// Notes how a request for a link names its ports.
  void noteLink(const MessageHeader& header, const char* bytes) {
    if (header.object != PW_ID_CORE || header.opcode() != PW_CORE_METHOD_CREATE_OBJECT) return;
    const std::string_view message(bytes, header.bytes());
    const std::lock_guard lock(mutex);
    for (const char* const key : {PW_KEY_LINK_OUTPUT_PORT, PW_KEY_LINK_INPUT_PORT}) {
      const std::size_t at = message.find(std::string(key) + '\0');
      if (at == std::string_view::npos) continue;
      // Strings are padded to 8 bytes, and the value follows 8 bytes of header.
      const std::size_t value = (at + std::strlen(key) + 1 + 7) / 8 * 8 + 8;
      linkPorts.emplace_back(bytes + value);
    }
  }

  /// Makes the daemon refuse the link by changing its factory's name to one that does not exist.
  void refuse(const MessageHeader& header, char* bytes) const {
    if (header.object != PW_ID_CORE || header.opcode() != PW_CORE_METHOD_CREATE_OBJECT) return;
    const std::string_view message(bytes, header.bytes());
    const std::size_t factory = message.find("link-factory");
    const std::size_t key = message.find(PW_KEY_LINK_INPUT_NODE);
    if (factory == std::string_view::npos || key == std::string_view::npos) return;
    // The value follows the key, the key's terminating zero and 8 bytes of header.
    const char* const node = bytes + key + sizeof(PW_KEY_LINK_INPUT_NODE) + 8;
    if (node == std::to_string(refusedNode)) bytes[factory] = 'x';
  }

  void lose(const MessageHeader& header, std::vector<char>& message) {
    if (header.object != PW_ID_CORE || header.opcode() != PW_CORE_EVENT_DONE) return;
    if (isLosing.exchange(false)) message.clear();
  }

  void misnumber(const MessageHeader& header, char* bytes) {
    if (header.object != PW_ID_CORE || header.opcode() != PW_CORE_EVENT_ADD_MEM) return;
    if (!isMisnumbering.exchange(false)) return;
    std::uint32_t id = 0;
    std::memcpy(&id, bytes + kMemoryIdOffset, sizeof(id));
    id += 80;
    std::memcpy(bytes + kMemoryIdOffset, &id, sizeof(id));
  }

  /// Sends a header that states more descriptors than a message can have.
  static void sendNonsense(int end) {
    const MessageHeader header{.object = PW_ID_CORE, .descriptors = 0xffff};
    std::vector<int> none;
    sendAll(end, reinterpret_cast<const char*>(&header), sizeof(header), none);
  }

  static void sendCoreError(int end, int result) {
    std::array<char, 256> bytes{};
    spa_pod_builder body =
        SPA_POD_BUILDER_INIT(bytes.data() + sizeof(MessageHeader),
                             static_cast<std::uint32_t>(bytes.size() - sizeof(MessageHeader)));
    spa_pod_builder_add_struct(&body, SPA_POD_Int(PW_ID_CORE), SPA_POD_Int(0), SPA_POD_Int(result),
                               SPA_POD_String("made by the test"));
    const MessageHeader header{
        .object = PW_ID_CORE,
        .opcodeAndSize = (std::uint32_t{PW_CORE_EVENT_ERROR} << 24) | body.state.offset};
    std::memcpy(bytes.data(), &header, sizeof(header));
    std::vector<int> none;
    sendAll(end, bytes.data(), header.bytes(), none);
  }
};

PipeWireProxy::PipeWireProxy() : state_(std::make_unique<State>()) {
  ::setenv("PIPEWIRE_REMOTE", state_->name.c_str(), 1);
}

PipeWireProxy::~PipeWireProxy() {
  ::unsetenv("PIPEWIRE_REMOTE");
  state_->isEnding = true;
  state_->thread.join();
  for (Connection& connection : state_->open) connection.close();
  ::close(state_->listener);
  ::unlink(state_->path.c_str());
}

void PipeWireProxy::misnumberNextMemory() {
  state_->isMisnumbering = true;
}

void PipeWireProxy::refuseLinksTo(std::uint32_t nodeId) {
  state_->refusedNode = nodeId;
}

void PipeWireProxy::sendNonsense() {
  state_->isNonsenseDue = true;
}

void PipeWireProxy::sendCoreError(int result) {
  state_->dueError = result;
}

void PipeWireProxy::loseNextAnswer() {
  state_->isLosing = true;
}

void PipeWireProxy::distort(std::uint64_t seed, unsigned rarity) {
  state_->distortion.emplace(seed, rarity);
  state_->isDistorting = true;
}

void PipeWireProxy::endDistortion() {
  state_->isDistorting = false;
  state_->isDropping = true;
}

std::vector<std::string> PipeWireProxy::linkPorts() const {
  const std::lock_guard lock(state_->mutex);
  return state_->linkPorts;
}

bool PipeWireProxy::isDone() const {
  return !state_->isMisnumbering && !state_->isLosing && !state_->isNonsenseDue && state_->dueError == 0;
}

unsigned PipeWireProxy::connections() const {
  return state_->connections;
}

}  // namespace tolvane::test
