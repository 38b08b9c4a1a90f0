#include "hal/virtual/virtual_model.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tolvane::hal {

namespace {

constexpr std::uint64_t kMaxChannels = 1024;
// The persistent identity: the device is the same under every configuration.
constexpr const char* kUid = "virtual:tolvane";

bool channelsAllowed(const StreamLayout& streams) {
  return std::accumulate(streams.begin(), streams.end(), std::uint64_t{0}) <= kMaxChannels;
}

bool indicesAllowed(const std::vector<std::size_t>& indices, const StreamLayout& streams) {
  return std::all_of(indices.begin(), indices.end(), [&](std::size_t i) { return i < streams.size(); });
}

std::vector<ChannelInfo> channelsNamed(const std::vector<std::string>& names) {
  std::vector<ChannelInfo> channels;
  channels.reserve(names.size());
  for (const std::string& name : names) channels.push_back({.name = name});
  return channels;
}

bool allowed(const VirtualDeviceConfig& config) {
  return channelsAllowed(config.inputStreams) && channelsAllowed(config.outputStreams) &&
         indicesAllowed(config.inputStreamsWithoutData, config.inputStreams) &&
         indicesAllowed(config.outputStreamsWithoutData, config.outputStreams) && config.bufferFrames > 0 &&
         std::isfinite(config.sampleRateHz) && config.sampleRateHz > 0.0;
}

}  // namespace

VirtualModel& VirtualModel::shared() {
  static auto* const model = new VirtualModel;
  return *model;
}

OSStatus VirtualModel::configure(const VirtualDeviceConfig& config) {
  if (!allowed(config)) return kAudioHardwareIllegalOperationError;
  const std::lock_guard lock(mutex_);
  if (sessions_ > 0) return kAudioHardwareIllegalOperationError;
  config_ = config;
  bufferFrames_.store(config.bufferFrames);
  tell();
  return noErr;
}

VirtualDeviceConfig VirtualModel::config() const {
  const std::lock_guard lock(mutex_);
  return config_;
}

DeviceInfo VirtualModel::info() const {
  const VirtualDeviceConfig is = config();
  DeviceInfo info;
  info.uid = kUid;
  info.name = is.name;
  info.transportType = kAudioDeviceTransportTypeVirtual;
  info.inputStreams = is.inputStreams;
  info.outputStreams = is.outputStreams;
  info.inputs = channelsNamed(is.inputNames);
  info.outputs = channelsNamed(is.outputNames);
  info.sampleRateHz = is.sampleRateHz;
  info.bufferFrames = bufferFrames();
  info.minBufferFrames = std::min(kMinBufferFrames, is.bufferFrames);
  info.maxBufferFrames = std::max(kMaxBufferFrames, is.bufferFrames);
  return info;
}

void VirtualModel::setBufferFrames(std::uint32_t frames) {
  const std::lock_guard lock(mutex_);
  bufferFrames_.store(frames);
  tell();
}

void VirtualModel::setRehearsal(const TolvaneRehearsal& rehearsal) {
  const std::lock_guard lock(mutex_);
  rehearsal_ = rehearsal;
}

VirtualModel::SessionConfig VirtualModel::beginSession() {
  const std::lock_guard lock(mutex_);
  ++sessions_;
  return {config_, rehearsal_};
}

void VirtualModel::endSession() {
  const std::lock_guard lock(mutex_);
  --sessions_;
}

void VirtualModel::observe(Driver& driver, DeviceObserver& observer) {
  const std::lock_guard lock(mutex_);
  driver_ = &driver;
  observer_ = &observer;
}

void VirtualModel::tell() const {
  if (observer_ != nullptr) observer_->devicesChanged(*driver_);
}

OSStatus configureVirtualDevice(const VirtualDeviceConfig& config) {
  return VirtualModel::shared().configure(config);
}

}  // namespace tolvane::hal
