#include "hal/registry/catalog.h"

#include <algorithm>
#include <set>
#include <utility>

#include "hal/support/utf8.h"

namespace tolvane::hal {

void Catalog::useDrivers(std::vector<std::unique_ptr<Driver>> drivers) {
  // The desks of drivers before are kept alive by their threads' use of them: they are never destroyed.
  static auto* const retired = new std::vector<DeskRef>;
  const std::lock_guard lock(mutex_);
  for (Source& source : sources_) {
    for (const auto& device : source.devices) device->unlist();
    retired->push_back(std::move(source.desk));
  }
  sources_.clear();
  for (auto& driver : drivers) {
    sources_.push_back({std::make_shared<DriverDesk>(std::move(driver), onNews_), nullptr, 0, 0, {}});
  }
}

std::vector<Catalog::DeskRef> Catalog::desks() const {
  const std::lock_guard lock(mutex_);
  std::vector<DeskRef> desks;
  desks.reserve(sources_.size());
  for (const Source& source : sources_) desks.push_back(source.desk);
  return desks;
}

std::vector<Catalog::DeskRef> Catalog::desksWithNews() const {
  const std::lock_guard lock(mutex_);
  std::vector<DeskRef> desks;
  for (const Source& source : sources_) {
    if (source.desk->news() > source.news) desks.push_back(source.desk);
  }
  return desks;
}

std::vector<AudioObjectID> Catalog::askAll() {
  return askThese(desks());
}

void Catalog::ask(const DeskRef& desk) {
  askThese({desk});
}

void Catalog::askThoseWithNews() {
  const auto withNews = desksWithNews();
  if (!withNews.empty()) askThese(withNews);
}

std::vector<AudioObjectID> Catalog::askThese(const std::vector<DeskRef>& desks) {
  const auto deadline = Clock::now() + DriverDesk::kAnswerLimit;
  std::vector<DriverDesk::Ticket> tickets;
  tickets.reserve(desks.size());
  for (const DeskRef& desk : desks) tickets.push_back(desk->ask());
  std::vector<std::shared_ptr<const DriverAnswer>> answers;
  answers.reserve(desks.size());
  for (std::size_t d = 0; d < desks.size(); ++d) answers.push_back(desks[d]->answer(tickets[d], deadline));
  const std::lock_guard lock(mutex_);
  for (std::size_t d = 0; d < desks.size(); ++d) take(desks[d], std::move(answers[d]));
  relist();
  return publishList();
}

void Catalog::take(const DeskRef& desk, std::shared_ptr<const DriverAnswer> answer) {
  const auto source =
      std::find_if(sources_.begin(), sources_.end(), [&](const Source& s) { return s.desk == desk; });
  if (source == sources_.end()) return;
  if (answer && answer->number < source->answered) return;
  if (answer) {
    source->answered = answer->number;
    source->news = answer->news;
  }
  source->answer = std::move(answer);
}

/// Makes the list of all answers anew: what one driver lists may hide what a later one has.
void Catalog::relist() {
  std::vector<std::shared_ptr<Device>> before;
  for (Source& source : sources_) {
    before.insert(before.end(), source.devices.begin(), source.devices.end());
    source.devices.clear();
  }
  ListedAlready listed;
  for (Source& source : sources_) {
    if (source.answer && listed.begin(source.answer->server)) listDevices(source, listed);
  }
  std::set<std::shared_ptr<Device>> now;
  for (const Source& source : sources_) now.insert(source.devices.begin(), source.devices.end());
  for (const auto& device : before) {
    if (!now.contains(device)) device->unlist();
  }
}

void Catalog::listDevices(Source& source, ListedAlready& listed) {
  for (DeviceInfo info : source.answer->devices) {
    info.uid = validUtf8(info.uid);
    info.name = validUtf8(info.name);
    if (listed.has(info)) continue;
    listed.add(info);
    listDevice(source, std::move(info));
  }
}

void Catalog::listDevice(Source& source, DeviceInfo info) {
  const Clock::time_point askedAt = source.answer->askedAt;
  std::shared_ptr<Device>& device = byUid_[info.uid];
  if (device) {
    device->list(source.desk, std::move(info), askedAt);
  } else {
    device = std::make_shared<Device>(nextId_++, source.desk, std::move(info), askedAt);
    byId_[device->id()] = device;
  }
  source.devices.push_back(device);
}

std::vector<AudioObjectID> Catalog::publishList() {
  std::vector<AudioObjectID> list;
  for (const Source& source : sources_) {
    for (const auto& device : source.devices) list.push_back(device->id());
  }
  if (listed_ && list != list_) listChanged_ = true;
  listed_ = true;
  list_ = list;
  return list;
}

std::shared_ptr<Device> Catalog::device(AudioObjectID id) {
  std::shared_ptr<Device> found;
  {
    const std::lock_guard lock(mutex_);
    const auto at = byId_.find(id);
    if (at == byId_.end()) return nullptr;
    found = at->second;
  }
  const auto withNews = desksWithNews();
  const DeskRef desk = found->desk();
  if (std::find(withNews.begin(), withNews.end(), desk) != withNews.end()) ask(desk);
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
