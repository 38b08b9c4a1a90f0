#include "hal/pipewire/link_set.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <utility>

namespace tolvane::hal::pipewire {

namespace {

using std::chrono::milliseconds;

// Pauses between attempts, in case the server refuses every one.
constexpr milliseconds kFirstLinkPause{50};
constexpr milliseconds kLongestLinkPause{800};
// For a link to carry audio again by itself. A busy machine may take long.
constexpr milliseconds kStallLimit{300};
// For audio to come through a link that carries some. Longer than machines stand still.
constexpr milliseconds kSilenceLimit{1000};
constexpr int kMostSilentAttempts = 3;

}  // namespace

class LinkSet::Link {
 public:
  Link(LinkSet& set, pw_core* core, const LinkEnd& from, const LinkEnd& to)
      : library_(set.library_), changed_(set.changed_), from_(from), to_(to) {
    proxy_ = request(core);
    if (proxy_ == nullptr) return;
    library_.pw_proxy_add_listener(proxy_, &proxyHook_, &kProxyEvents, this);
    addListener(reinterpret_cast<pw_link*>(proxy_), &hook_, &kLinkEvents, this);
  }

  ~Link() {
    if (proxy_ != nullptr) library_.pw_proxy_destroy(proxy_);
  }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;

  [[nodiscard]] bool isBetween(const LinkEnd& from, const LinkEnd& to) const {
    return from_ == from && to_ == to;
  }
  [[nodiscard]] bool isReady() const noexcept { return isReady_; }
  [[nodiscard]] bool isActive() const noexcept { return isActive_; }

  /// True if the link is up, but has not carried audio for `pause`.
  [[nodiscard]] bool hasStalled(milliseconds pause) const noexcept {
    return isReady_ && !isActive_ &&
           std::chrono::steady_clock::now() - inactiveSince_ >= std::max(pause, kStallLimit);
  }

  /// True if the link has been active for so long that audio must have come.
  [[nodiscard]] bool isLongActive() const noexcept {
    return isActive_ && std::chrono::steady_clock::now() - activeSince_ >= kSilenceLimit;
  }

  enum class Removal { none, noticed, asked, confirmed };
  [[nodiscard]] Removal removal() const noexcept { return removal_; }
  void setRemoval(Removal removal) noexcept { removal_ = removal; }

  /// True if the link has failed, and the last attempt was at least `pause` ago.
  [[nodiscard]] bool mayBeRetried(milliseconds pause) const noexcept {
    const bool isDead = removal_ == Removal::none && (isDead_ || proxy_ == nullptr);
    return isDead && std::chrono::steady_clock::now() - asked_ >= pause;
  }

 private:
  pw_proxy* request(pw_core* core) const {
    const std::string fromNode = std::to_string(from_.nodeId);
    const std::string toNode = std::to_string(to_.nodeId);
    const std::array<spa_dict_item, 5> items = {{{PW_KEY_LINK_OUTPUT_NODE, fromNode.c_str()},
                                                 {PW_KEY_LINK_OUTPUT_PORT, from_.port.c_str()},
                                                 {PW_KEY_LINK_INPUT_NODE, toNode.c_str()},
                                                 {PW_KEY_LINK_INPUT_PORT, to_.port.c_str()},
                                                 {PW_KEY_OBJECT_LINGER, "false"}}};
    const spa_dict properties{0, static_cast<std::uint32_t>(items.size()), items.data()};
    return createObject(core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties);
  }

  void become(bool ready, bool active, bool dead) {
    if (ready == isReady_ && active == isActive_ && dead == isDead_) return;
    if (isActive_ && !active) inactiveSince_ = std::chrono::steady_clock::now();
    if (!isActive_ && active) activeSince_ = std::chrono::steady_clock::now();
    isReady_ = ready;
    isActive_ = active;
    isDead_ = dead;
    changed_();
  }

  void onRemoved() {
    if (!isDead_) removal_ = Removal::noticed;
    become(false, false, true);
  }

  void onDestroy() {
    spa_hook_remove(&proxyHook_);
    spa_hook_remove(&hook_);
    proxy_ = nullptr;
  }

  static const pw_proxy_events kProxyEvents;
  static const pw_link_events kLinkEvents;

  const Library& library_;
  const Task& changed_;
  LinkEnd from_;
  LinkEnd to_;
  pw_proxy* proxy_ = nullptr;
  spa_hook proxyHook_{};
  spa_hook hook_{};
  bool isReady_ = false;
  bool isActive_ = false;
  bool isDead_ = false;
  Removal removal_ = Removal::none;
  std::chrono::steady_clock::time_point asked_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point inactiveSince_ = asked_;
  std::chrono::steady_clock::time_point activeSince_ = asked_;
};

const pw_proxy_events LinkSet::Link::kProxyEvents = [] {
  pw_proxy_events events{};
  events.version = PW_VERSION_PROXY_EVENTS;
  events.destroy = [](void* data) { static_cast<Link*>(data)->onDestroy(); };
  events.removed = [](void* data) { static_cast<Link*>(data)->onRemoved(); };
  events.error = [](void* data, int /*sequence*/, int /*result*/, const char* /*message*/) {
    static_cast<Link*>(data)->become(false, false, true);
  };
  return events;
}();

const pw_link_events LinkSet::Link::kLinkEvents = [] {
  pw_link_events events{};
  events.version = PW_VERSION_LINK_EVENTS;
  events.info = [](void* data, const pw_link_info* info) {
    if ((info->change_mask & PW_LINK_CHANGE_MASK_STATE) == 0) return;
    static_cast<Link*>(data)->become(info->state >= PW_LINK_STATE_PAUSED, info->state >= PW_LINK_STATE_ACTIVE,
                                     info->state < PW_LINK_STATE_INIT);
  };
  return events;
}();

LinkSet::LinkSet(const Library& library, std::size_t places, Task changed)
    : library_(library), changed_(std::move(changed)), places_(places) {}

LinkSet::~LinkSet() = default;

void LinkSet::want(pw_core* core, std::size_t place, const LinkEnd& from, const LinkEnd& to, bool isSilent) {
  auto& [link, pause, wasActive, silentAttempts] = places_[place];
  const bool isSame = link && link->isBetween(from, to);
  if (!isSame) wasActive = false;
  if (isSame && link->isActive()) wasActive = true;
  if (!isSame || link->isActive()) pause = kFirstLinkPause;
  if (!isSame || !isSilent) silentAttempts = 0;
  const bool isMute = isSame && isSilent && silentAttempts < kMostSilentAttempts && link->isLongActive();
  if (isMute) ++silentAttempts;
  const bool hasStalled = isMute || (isSame && wasActive && link->hasStalled(pause));
  if (isSame && !hasStalled && !link->mayBeRetried(pause)) return;
  if (isSame) pause = std::min(2 * pause, kLongestLinkPause);
  link.reset();
  link = std::make_unique<Link>(*this, core, from, to);
}

bool LinkSet::isAnyPaused() const noexcept {
  return std::any_of(places_.begin(), places_.end(), [](const Place& place) {
    return place.link && place.wasActive && place.link->isReady() && !place.link->isActive();
  });
}

void LinkSet::drop(std::size_t place) {
  places_[place].link.reset();
}

void LinkSet::dropAll() {
  for (Place& place : places_) place.link.reset();
}

bool LinkSet::askAboutRemoved() {
  bool isAny = false;
  for (Place& place : places_) {
    if (!place.link || place.link->removal() != Link::Removal::noticed) continue;
    place.link->setRemoval(Link::Removal::asked);
    isAny = true;
  }
  return isAny;
}

void LinkSet::confirmRemoved() {
  for (Place& place : places_) {
    if (place.link && place.link->removal() == Link::Removal::asked) {
      place.link->setRemoval(Link::Removal::confirmed);
    }
  }
}

bool LinkSet::isRemoved(std::size_t place) const noexcept {
  const auto& link = places_[place].link;
  return link && link->removal() == Link::Removal::confirmed;
}

std::size_t LinkSet::ready(std::size_t first, std::size_t count) const noexcept {
  const auto begin = places_.begin() + static_cast<std::ptrdiff_t>(first);
  return static_cast<std::size_t>(
      std::count_if(begin, begin + static_cast<std::ptrdiff_t>(count),
                    [](const Place& place) { return place.link && place.link->isReady(); }));
}

std::size_t LinkSet::removed(std::size_t first, std::size_t count) const noexcept {
  const auto begin = places_.begin() + static_cast<std::ptrdiff_t>(first);
  return static_cast<std::size_t>(std::count_if(
      begin, begin + static_cast<std::ptrdiff_t>(count),
      [](const Place& place) { return place.link && place.link->removal() != Link::Removal::none; }));
}

}  // namespace tolvane::hal::pipewire
