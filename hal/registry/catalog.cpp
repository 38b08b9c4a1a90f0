#include "hal/registry/catalog.h"

#include <algorithm>
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
    sources_.push_back({std::make_shared<DriverDesk>(std::move(driver), onNews_), 0, 0, {}});
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
  for (std::size_t d = 0; d < desks.size(); ++d) take(desks[d], answers[d].get());
  return publishList();
}

void Catalog::take(const DeskRef& desk, const DriverAnswer* answer) {
  const auto source =
      std::find_if(sources_.begin(), sources_.end(), [&](const Source& s) { return s.desk == desk; });
  if (source == sources_.end()) return;
  if (answer == nullptr) {
    for (const auto& device : source->devices) device->unlist();
    source->devices.clear();
  } else if (answer->number >= source->answered) {
    listDevices(*source, *answer);
  }
}

void Catalog::listDevices(Source& source, const DriverAnswer& answer) {
  const auto before = std::exchange(source.devices, {});
  source.answered = answer.number;
  source.news = answer.news;
  for (const DeviceInfo& info : answer.devices) listDevice(source, info, answer.askedAt);
  for (const auto& device : before) {
    const bool still =
        std::find(source.devices.begin(), source.devices.end(), device) != source.devices.end();
    if (!still) device->unlist();
  }
}

void Catalog::listDevice(Source& source, DeviceInfo info, Clock::time_point askedAt) {
  if (listedElsewhere(source, info.uid)) return;
  info.uid = validUtf8(info.uid);
  info.name = validUtf8(info.name);
  std::shared_ptr<Device>& device = byUid_[info.uid];
  if (device) {
    device->list(source.desk, std::move(info), askedAt);
  } else {
    device = std::make_shared<Device>(nextId_++, source.desk, std::move(info), askedAt);
    byId_[device->id()] = device;
  }
  source.devices.push_back(device);
}

bool Catalog::listedElsewhere(const Source& source, const std::string& uid) const {
  const auto known = byUid_.find(uid);
  if (known == byUid_.end()) return false;
  // Of two drivers that name one device, and of two mentions by one driver, the first has it.
  for (const Source& other : sources_) {
    const bool there =
        std::find(other.devices.begin(), other.devices.end(), known->second) != other.devices.end();
    if (there) return true;
    if (&other == &source) return false;
  }
  return false;
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
