#include "hal/registry/device.h"

#include <algorithm>
#include <utility>

#include "hal/surface/hardware_periods.h"
#include "hal/surface/removed_links.h"

namespace tolvane::hal {

namespace {

void addRenames(AudioObjectPropertyScope scope, const std::vector<ChannelInfo>& before,
                const std::vector<ChannelInfo>& now, std::vector<AudioObjectPropertyAddress>& renames) {
  const auto nameIn = [](const std::vector<ChannelInfo>& channels, std::size_t c) {
    return c < channels.size() ? channels[c].name : std::string();
  };
  for (std::size_t c = 0; c < std::max(before.size(), now.size()); ++c) {
    if (nameIn(before, c) == nameIn(now, c)) continue;
    renames.push_back({kAudioObjectPropertyElementName, scope, static_cast<UInt32>(c + 1)});
  }
}

}  // namespace

Device::Device(AudioObjectID id, std::shared_ptr<DriverPoller> poller, DeviceInfo info,
               Clock::time_point listedAt)
    : id_(id), poller_(std::move(poller)), info_(std::move(info)), listedAt_(listedAt), published_{info_} {}

void Device::list(std::shared_ptr<DriverPoller> poller, DeviceInfo info, Clock::time_point listedAt) {
  const std::lock_guard lock(mutex_);
  poller_ = std::move(poller);
  relisted_ = relisted_ || info != info_;
  info_ = std::move(info);
  listedAt_ = listedAt;
}

void Device::unlist() {
  const std::lock_guard lock(mutex_);
  listedAt_.reset();
}

DeviceInfo Device::info() const {
  const std::lock_guard lock(mutex_);
  return info_;
}

std::string Device::channelText(std::vector<ChannelInfo> DeviceInfo::*direction, std::size_t channel,
                                std::string ChannelInfo::*text) const {
  const std::lock_guard lock(mutex_);
  const std::vector<ChannelInfo>& channels = info_.*direction;
  return channel < channels.size() ? channels[channel].*text : std::string();
}

std::shared_ptr<DriverPoller> Device::poller() const {
  const std::lock_guard lock(mutex_);
  return poller_;
}

std::optional<Clock::time_point> Device::listedAt() const {
  const std::lock_guard lock(mutex_);
  return listedAt_;
}

void Device::sessionFormat(const void* session, double sampleRateHz, std::uint32_t bufferFrames) noexcept {
  formatReporter_.store(session);
  sessionSampleRateHz_.store(sampleRateHz, std::memory_order_relaxed);
  sessionBufferFrames_.store(bufferFrames, std::memory_order_relaxed);
}

void Device::sessionLinks(const void* session, RemovedLinks removed) {
  const std::lock_guard lock(mutex_);
  linksReporter_ = session;
  removedLinks_ = std::move(removed);
}

void Device::forgetSession(const void* session) {
  if (formatReporter_.load() == session) sessionFormat(nullptr, 0.0, 0);
  const std::lock_guard lock(mutex_);
  if (linksReporter_ == session) removedLinks_ = {};
}

RemovedLinks Device::removedLinks() const {
  const std::lock_guard lock(mutex_);
  return removedLinks_;
}

double Device::sampleRateHz() const {
  const std::lock_guard lock(mutex_);
  return sampleRateLocked();
}

std::uint32_t Device::bufferFrames() const {
  const std::lock_guard lock(mutex_);
  return bufferFramesLocked();
}

double Device::sampleRateLocked() const {
  const double session = sessionSampleRateHz_.load(std::memory_order_relaxed);
  return session > 0.0 ? session : info_.sampleRateHz;
}

std::uint32_t Device::bufferFramesLocked() const {
  const std::uint32_t session = sessionBufferFrames_.load(std::memory_order_relaxed);
  return session > 0 ? session : info_.bufferFrames;
}

std::uint32_t Device::overloads() const noexcept {
  return overloads_.load(std::memory_order_relaxed);
}

std::vector<AudioObjectPropertySelector> Device::takeChanges(bool alive) {
  std::vector<AudioObjectPropertySelector> changes;
  const std::lock_guard lock(mutex_);
  if (std::exchange(relisted_, false)) takeListChanges(changes);
  const auto take = [&](AudioObjectPropertySelector selector, auto& published, auto now) {
    if (std::exchange(published, now) != now) changes.push_back(selector);
  };
  take(kAudioDevicePropertyNominalSampleRate, published_.info.sampleRateHz, sampleRateLocked());
  take(kAudioDevicePropertyBufferFrameSize, published_.info.bufferFrames, bufferFramesLocked());
  take(kAudioDevicePropertyDeviceIsAlive, published_.alive, alive);
  take(kTolvaneDevicePropertyRemovedLinks, published_.removedLinks, removedLinks_);
  const std::uint32_t count = overloads();
  changes.insert(changes.end(), count - std::exchange(published_.overloads, count),
                 kAudioDeviceProcessorOverload);
  return changes;
}

std::vector<AudioObjectPropertyAddress> Device::takeRenames() {
  const std::lock_guard lock(mutex_);
  return std::exchange(renames_, {});
}

void Device::takeListChanges(std::vector<AudioObjectPropertySelector>& changes) {
  DeviceInfo& published = published_.info;
  if (info_.name != published.name) changes.push_back(kAudioObjectPropertyName);
  if (info_.inputStreams != published.inputStreams || info_.outputStreams != published.outputStreams) {
    changes.push_back(kAudioDevicePropertyStreamConfiguration);
  }
  if (info_.minBufferFrames != published.minBufferFrames ||
      info_.maxBufferFrames != published.maxBufferFrames) {
    changes.push_back(kAudioDevicePropertyBufferFrameSizeRange);
  }
  if (info_.sampleRatesHz != published.sampleRatesHz) {
    changes.push_back(kAudioDevicePropertyAvailableNominalSampleRates);
  }
  if (info_.periods != published.periods) changes.push_back(kTolvaneDevicePropertyPeriods);
  if (info_.minPeriods != published.minPeriods || info_.maxPeriods != published.maxPeriods) {
    changes.push_back(kTolvaneDevicePropertyPeriodsRange);
  }
  addRenames(kAudioObjectPropertyScopeInput, published.inputs, info_.inputs, renames_);
  addRenames(kAudioObjectPropertyScopeOutput, published.outputs, info_.outputs, renames_);
  const double sampleRateHz = published.sampleRateHz;
  const std::uint32_t bufferFrames = published.bufferFrames;
  published = info_;
  published.sampleRateHz = sampleRateHz;
  published.bufferFrames = bufferFrames;
}

}  // namespace tolvane::hal
