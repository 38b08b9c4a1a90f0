#include "hal/pipewire/connection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "hal/pipewire/graph_watch.h"

namespace tolvane::hal::pipewire {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Pauses between attempts, in case the server fails every connection.
constexpr milliseconds kFirstPause{100};
constexpr milliseconds kLongestPause{1600};
constexpr milliseconds kSoon{5000};  // a connection that lasts longer resets the pause

}  // namespace

const pw_core_events Connection::kCoreEvents = [] {
  pw_core_events events{};
  events.version = PW_VERSION_CORE_EVENTS;
  events.done = [](void* data, std::uint32_t id, int sequence) {
    static_cast<Connection*>(data)->onDone(id, sequence);
  };
  events.error = [](void* data, std::uint32_t id, int /*sequence*/, int result, const char* /*message*/) {
    static_cast<Connection*>(data)->onError(id, result);
  };
  events.add_mem = [](void* data, std::uint32_t id, std::uint32_t /*type*/, int descriptor,
                      std::uint32_t /*flags*/) { static_cast<Connection*>(data)->onMemory(id, descriptor); };
  return events;
}();

Connection::Connection(const Library& library, LoopThread& thread, Task lost, Task changed)
    : library_(library), thread_(thread), lost_(std::move(lost)), changed_(std::move(changed)) {}

Connection::~Connection() {
  disconnect();
  if (context_ != nullptr) library_.pw_context_destroy(context_);
}

bool Connection::ensure() {
  if (core_ != nullptr) return !broken_;
  if (steady_clock::now() < nextAttempt_) return false;
  if (context_ == nullptr) {
    const std::array<spa_dict_item, 1> items = {
        {{PW_KEY_CONFIG_NAME, realTimeConfigName(library_.pw_get_library_version())}}};
    const spa_dict properties{0, static_cast<std::uint32_t>(items.size()), items.data()};
    context_ = library_.pw_context_new(thread_.loop(), library_.pw_properties_new_dict(&properties), 0);
    if (context_ == nullptr) return false;
  }
  core_ = library_.pw_context_connect(context_, nullptr, 0);
  if (core_ == nullptr) return false;
  broken_ = false;
  made_ = steady_clock::now();
  addListener(core_, &coreHook_, &kCoreEvents, this);
  watch_ = std::make_unique<GraphWatch>(library_, thread_, core_, changed_);
  settle([this](bool answered) {
    ready_ = answered;
    if (answered) changed_();
  });
  return true;
}

void Connection::ask(bool isSecond, std::function<void(bool)> answered) {
  const int sequence = sync(core_);
  questions_.push_back({sequence, isSecond, std::move(answered)});
  if (sequence < 0) giveUp();  // which answers the question
}

void Connection::settle(std::function<void(bool)> answered) {
  if (core_ == nullptr || broken_) return answered(false);
  ask(false, std::move(answered));
}

void Connection::onDone(std::uint32_t id, int sequence) {
  if (id != PW_ID_CORE || broken_) return;
  const auto asked = std::find_if(questions_.begin(), questions_.end(),
                                  [&](const Question& question) { return question.sequence == sequence; });
  if (asked == questions_.end()) return;  // the library asks, too
  // Answers come in the order of the questions. A server that has left one out is not to be relied on.
  if (asked != questions_.begin()) {
    delayNextAttempt();
    return giveUp();
  }
  Question question = std::move(questions_.front());
  questions_.pop_front();
  if (question.isSecond) {
    question.answered(true);
  } else {
    ask(true, std::move(question.answered));
  }
}

/// An error of the server itself, not of one of its objects, leaves a dead connection: we receive nothing
/// more and can make no objects. ENOENT is the exception: the server does not know an object that we remove,
/// because it has refused to make it.
void Connection::onError(std::uint32_t id, int result) {
  if (id != PW_ID_CORE || result == -ENOENT || broken_) return;
  if (result != -EPIPE) delayNextAttempt();
  giveUp();
}

/// Called when the library has taken over a memory block. Library and server both number the blocks by the
/// same rule. A library before 0.3.71 may lose a descriptor between two long messages. From then on the
/// numbers differ and no later link finds its buffers, so the connection is given up.
void Connection::onMemory(std::uint32_t id, int descriptor) {
  if (broken_) return;
  const pw_memblock* const block = library_.pw_mempool_find_id(library_.pw_core_get_mempool(core_), id);
  if (block != nullptr && descriptor >= 0 && block->fd == descriptor) return;
  delayNextAttempt();
  giveUp();
}

void Connection::delayNextAttempt() {
  const auto now = steady_clock::now();
  if (now - made_ >= kSoon) pause_ = milliseconds{0};
  nextAttempt_ = now + pause_;
  pause_ = std::clamp(2 * pause_, kFirstPause, kLongestPause);
}

void Connection::giveUp() {
  broken_ = true;
  // Posted, because the library is still using what disconnect() destroys.
  thread_.post([this, alive = std::weak_ptr<int>(alive_)] {
    if (!alive.expired()) disconnect();
  });
}

void Connection::disconnect() {
  if (core_ == nullptr) return;
  broken_ = true;
  lost_();
  watch_.reset();
  spa_hook_remove(&coreHook_);
  library_.pw_core_disconnect(core_);
  core_ = nullptr;
  ready_ = false;
  std::deque<Question> unanswered;
  unanswered.swap(questions_);
  for (Question& question : unanswered) question.answered(false);
}

const Graph& Connection::graph() const noexcept {
  static const Graph kNothing;
  return watch_ ? watch_->graph() : kNothing;
}

}  // namespace tolvane::hal::pipewire
