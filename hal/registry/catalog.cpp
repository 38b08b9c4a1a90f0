#include "hal/registry/catalog.h"

#include <algorithm>
#include <set>
#include <utility>

#include "hal/driver/time_limits.h"
#include "hal/support/utf8.h"

namespace tolvane::hal {

namespace {

void makeTextsValid(DeviceInfo& info) {
  info.uid = validUtf8(info.uid);
  info.name = validUtf8(info.name);
  for (auto* const channels : {&info.inputs, &info.outputs}) {
    for (ChannelInfo& channel : *channels) {
      for (std::string* const text : {&channel.name, &channel.node, &channel.port}) *text = validUtf8(*text);
    }
  }
}

}  // namespace

void Catalog::useDrivers(std::vector<std::unique_ptr<Driver>> drivers) {
  // Pollers are never destroyed: their threads go on using them.
  static auto* const retired = new std::vector<PollerRef>;
  const std::lock_guard lock(mutex_);
  for (Source& source : sources_) {
    for (const auto& device : source.devices) device->unlist();
    retired->push_back(std::move(source.poller));
  }
  sources_.clear();
  allAsked_ = false;
  std::set<std::string> servers;
  for (auto& driver : drivers) {
    // Even asking this driver would make a client on a server that an earlier driver serves.
    const std::string server = driver->server();
    if (!server.empty() && !servers.insert(server).second) continue;
    sources_.push_back({std::make_shared<DriverPoller>(std::move(driver), onChange_), nullptr, 0, 0, {}});
  }
}

std::vector<Catalog::PollerRef> Catalog::pollers() const {
  const std::lock_guard lock(mutex_);
  std::vector<PollerRef> pollers;
  pollers.reserve(sources_.size());
  for (const Source& source : sources_) pollers.push_back(source.poller);
  return pollers;
}

std::vector<Catalog::PollerRef> Catalog::changedPollers() const {
  const std::lock_guard lock(mutex_);
  std::vector<PollerRef> pollers;
  for (const Source& source : sources_) {
    if (source.poller->generation() > source.generation) pollers.push_back(source.poller);
  }
  return pollers;
}

DeviceListing Catalog::askAll() {
  const auto asked = pollers();
  auto [answers, list] = askThese(asked, allAsked_.exchange(true) ? kListLimit : kFirstListLimit);
  DeviceListing listing{std::move(list), {}};
  for (std::size_t d = 0; d < asked.size(); ++d) {
    if (!answers[d]) listing.silentDrivers.emplace_back(asked[d]->driver().name());
    if (answers[d] && answers[d]->failure) std::rethrow_exception(answers[d]->failure);
  }
  return listing;
}

void Catalog::prefetch() {
  for (const PollerRef& poller : pollers()) poller->ask();
}

std::vector<std::string> Catalog::problems() const {
  std::vector<std::string> problems;
  for (const PollerRef& poller : pollers()) {
    if (std::string problem = poller->driver().problem(); !problem.empty()) {
      problems.push_back(std::move(problem));
    }
  }
  return problems;
}

void Catalog::ask(const PollerRef& poller) {
  askThese({poller}, kListLimit);
}

void Catalog::askTheChanged() {
  const auto changed = changedPollers();
  if (!changed.empty()) askThese(changed, kListLimit);
}

Catalog::Asked Catalog::askThese(const std::vector<PollerRef>& pollers, std::chrono::milliseconds limit) {
  const auto deadline = Clock::now() + limit;
  std::vector<DriverPoller::Ticket> tickets;
  tickets.reserve(pollers.size());
  for (const PollerRef& poller : pollers) tickets.push_back(poller->ask());
  Asked asked;
  asked.answers.reserve(pollers.size());
  for (std::size_t d = 0; d < pollers.size(); ++d) {
    asked.answers.push_back(pollers[d]->answer(tickets[d], deadline));
  }
  const std::lock_guard lock(mutex_);
  for (std::size_t d = 0; d < pollers.size(); ++d) take(pollers[d], tickets[d].call, asked.answers[d]);
  relist();
  publishList();
  asked.list = list_;
  return asked;
}

void Catalog::take(const PollerRef& poller, std::uint64_t call, std::shared_ptr<const DriverAnswer> answer) {
  const auto source =
      std::find_if(sources_.begin(), sources_.end(), [&](const Source& s) { return s.poller == poller; });
  if (source == sources_.end()) return;
  // Another caller has already taken a later answer, or the answer that this call did not wait for.
  if (answer ? answer->number < source->answered : call <= source->answered) return;
  if (answer) {
    source->answered = answer->number;
    source->generation = answer->generation;
  }
  source->answer = answer && !answer->failure ? std::move(answer) : nullptr;
}

/// Rebuilds the list from all answers: a device of one driver may hide a device of a later one.
void Catalog::relist() {
  std::vector<std::shared_ptr<Device>> before;
  for (Source& source : sources_) {
    before.insert(before.end(), source.devices.begin(), source.devices.end());
    source.devices.clear();
  }
  ListedAlready listed;
  for (Source& source : sources_) {
    if (!source.answer) continue;
    listed.begin();
    listDevices(source, listed);
  }
  std::set<std::shared_ptr<Device>> now;
  for (const Source& source : sources_) now.insert(source.devices.begin(), source.devices.end());
  for (const auto& device : before) {
    if (!now.contains(device)) device->unlist();
  }
}

void Catalog::listDevices(Source& source, ListedAlready& listed) {
  for (DeviceInfo info : source.answer->devices) {
    makeTextsValid(info);
    if (info.isHeld || listed.has(info)) continue;
    listed.add(info);
    listDevice(source, std::move(info));
  }
}

void Catalog::listDevice(Source& source, DeviceInfo info) {
  const Clock::time_point askedAt = source.answer->askedAt;
  std::shared_ptr<Device>& device = byUid_[info.uid];
  if (device) {
    device->list(source.poller, std::move(info), askedAt);
  } else {
    device = std::make_shared<Device>(nextId_++, source.poller, std::move(info), askedAt);
    byId_[device->id()] = device;
  }
  source.devices.push_back(device);
}

void Catalog::publishList() {
  std::vector<AudioObjectID> list;
  for (const Source& source : sources_) {
    for (const auto& device : source.devices) list.push_back(device->id());
  }
  if (listed_ && list != list_) listChanged_ = true;
  listed_ = true;
  list_ = std::move(list);
}

template <typename IsWanted>
std::optional<Catalog::HeldCard> Catalog::findHeld(const IsWanted& isWanted) const {
  const std::lock_guard lock(mutex_);
  for (const Source& source : sources_) {
    if (!source.answer) continue;
    for (const DeviceInfo& info : source.answer->devices) {
      if (info.isHeld && isWanted(info)) return HeldCard{source.poller, info};
    }
  }
  return std::nullopt;
}

std::optional<Catalog::HeldCard> Catalog::heldCard(const std::string& uid) const {
  return findHeld([&](const DeviceInfo& info) { return validUtf8(info.uid) == uid; });
}

std::optional<Catalog::HeldCard> Catalog::heldCard(int alsaCard) const {
  return findHeld([&](const DeviceInfo& info) { return info.alsaCards == std::vector{alsaCard}; });
}

bool Catalog::isListed(const std::string& uid) const {
  const std::lock_guard lock(mutex_);
  return std::any_of(sources_.begin(), sources_.end(), [&](const Source& source) {
    return std::any_of(source.devices.begin(), source.devices.end(),
                       [&](const auto& device) { return device->info().uid == uid; });
  });
}

std::shared_ptr<Device> Catalog::device(AudioObjectID id) {
  std::shared_ptr<Device> found;
  {
    const std::lock_guard lock(mutex_);
    const auto at = byId_.find(id);
    if (at == byId_.end()) return nullptr;
    found = at->second;
  }
  const auto changed = changedPollers();
  const PollerRef poller = found->poller();
  if (std::find(changed.begin(), changed.end(), poller) != changed.end()) ask(poller);
  return found;
}

std::vector<std::shared_ptr<Device>> Catalog::devices() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<Device>> all;
  all.reserve(byId_.size());
  for (const auto& [id, device] : byId_) all.push_back(device);
  return all;
}

bool Catalog::takeListChange() {
  const std::lock_guard lock(mutex_);
  return std::exchange(listChanged_, false);
}

}  // namespace tolvane::hal
