#include <algorithm>

#include "hal/core_audio.h"
#include "hal/driver/buffer_list.h"
#include "hal/registry/properties.h"
#include "hal/registry/value_room.h"
#include "hal/support/realtime.h"
#include "hal/surface/hardware_periods.h"
#include "hal/surface/io_thread_scheduling.h"
#include "hal/surface/rehearsal.h"
#include "hal/surface/removed_links.h"

namespace tolvane::hal {

namespace {

constexpr AudioObjectPropertyScope kGlobal = kAudioObjectPropertyScopeGlobal;

template <typename Value>
UInt32 sizeOf(DeviceObject& /*object*/) {
  return sizeof(Value);
}

OSStatus readName(DeviceObject& object, const ValueRoom& room) {
  return writeString(room, object.device->info().name);
}

OSStatus readUid(DeviceObject& object, const ValueRoom& room) {
  return writeString(room, object.device->info().uid);
}

OSStatus readSampleRate(DeviceObject& object, const ValueRoom& room) {
  return writeValue<Float64>(room, object.device->sampleRateHz());
}

OSStatus readBufferFrames(DeviceObject& object, const ValueRoom& room) {
  return writeValue<UInt32>(room, object.device->bufferFrames());
}

AudioValueRange bufferFramesRange(const Device& device) {
  const DeviceInfo info = device.info();
  if (info.maxBufferFrames == 0) {
    const auto only = static_cast<Float64>(device.bufferFrames());
    return {only, only};
  }
  return {static_cast<Float64>(info.minBufferFrames), static_cast<Float64>(info.maxBufferFrames)};
}

OSStatus readBufferFramesRange(DeviceObject& object, const ValueRoom& room) {
  return writeValue(room, bufferFramesRange(*object.device));
}

OSStatus writeBufferFrames(DeviceObject& object, UInt32 dataSize, const void* data) {
  UInt32 frames = 0;
  if (dataSize != sizeof frames) return kAudioHardwareBadPropertySizeError;
  std::memcpy(&frames, data, sizeof frames);
  if (!object.registry.alive(*object.device)) return kAudioHardwareBadDeviceError;
  if (frames == object.device->bufferFrames()) return noErr;
  if (object.device->info().maxBufferFrames == 0) return kAudioHardwareUnsupportedOperationError;
  const AudioValueRange range = bufferFramesRange(*object.device);
  if (frames < range.mMinimum || frames > range.mMaximum) return kAudioHardwareIllegalOperationError;
  return object.registry.change(object.device, [=](Driver& driver, const DeviceInfo& device) {
    return driver.setBufferFrames(device, frames);
  });
}

/// The rates that can be set. A device whose rate is fixed has that one.
std::vector<AudioValueRange> sampleRates(const Device& device) {
  std::vector<double> rates = device.info().sampleRatesHz;
  if (rates.empty()) rates = {device.sampleRateHz()};
  std::vector<AudioValueRange> ranges;
  ranges.reserve(rates.size());
  for (const double rate : rates) ranges.push_back({rate, rate});
  return ranges;
}

UInt32 sampleRatesSize(DeviceObject& object) {
  return static_cast<UInt32>(sampleRates(*object.device).size() * sizeof(AudioValueRange));
}

OSStatus readSampleRates(DeviceObject& object, const ValueRoom& room) {
  return writeArray(room, sampleRates(*object.device));
}

OSStatus writeSampleRate(DeviceObject& object, UInt32 dataSize, const void* data) {
  Float64 rateHz = 0.0;
  if (dataSize != sizeof rateHz) return kAudioHardwareBadPropertySizeError;
  std::memcpy(&rateHz, data, sizeof rateHz);
  if (!object.registry.alive(*object.device)) return kAudioHardwareBadDeviceError;
  if (rateHz == object.device->sampleRateHz()) return noErr;
  const std::vector<double> rates = object.device->info().sampleRatesHz;
  if (rates.empty()) return kAudioHardwareUnsupportedOperationError;
  if (std::find(rates.begin(), rates.end(), rateHz) == rates.end()) {
    return kAudioHardwareIllegalOperationError;
  }
  return object.registry.change(object.device, [=](Driver& driver, const DeviceInfo& device) {
    return driver.setSampleRate(device, rateHz);
  });
}

OSStatus readPeriods(DeviceObject& object, const ValueRoom& room) {
  const UInt32 periods = object.device->info().periods;
  return periods == 0 ? OSStatus{kAudioHardwareUnsupportedOperationError} : writeValue(room, periods);
}

OSStatus readPeriodsRange(DeviceObject& object, const ValueRoom& room) {
  const DeviceInfo info = object.device->info();
  if (info.maxPeriods == 0) return kAudioHardwareUnsupportedOperationError;
  return writeValue(
      room, AudioValueRange{static_cast<Float64>(info.minPeriods), static_cast<Float64>(info.maxPeriods)});
}

OSStatus writePeriods(DeviceObject& object, UInt32 dataSize, const void* data) {
  UInt32 periods = 0;
  if (dataSize != sizeof periods) return kAudioHardwareBadPropertySizeError;
  std::memcpy(&periods, data, sizeof periods);
  if (!object.registry.alive(*object.device)) return kAudioHardwareBadDeviceError;
  const DeviceInfo info = object.device->info();
  if (info.maxPeriods == 0) return kAudioHardwareUnsupportedOperationError;
  if (periods == info.periods) return noErr;
  if (periods < info.minPeriods || periods > info.maxPeriods) return kAudioHardwareIllegalOperationError;
  return object.registry.change(object.device, [=](Driver& driver, const DeviceInfo& device) {
    return driver.setPeriods(device, periods);
  });
}

OSStatus readAlive(DeviceObject& object, const ValueRoom& room) {
  return writeValue<UInt32>(room, object.registry.alive(*object.device) ? 1 : 0);
}

OSStatus readTransport(DeviceObject& object, const ValueRoom& room) {
  return writeValue<UInt32>(room, object.device->info().transportType);
}

OSStatus readOverloads(DeviceObject& object, const ValueRoom& room) {
  return writeValue<UInt32>(room, object.device->overloads());
}

OSStatus readProAudioCommand(DeviceObject& object, const ValueRoom& room) {
  return writeString(room, object.device->info().proAudioCommand);
}

OSStatus readCardUid(DeviceObject& object, const ValueRoom& room) {
  return writeString(room, object.registry.cardUid(*object.device));
}

OSStatus readMonitorChannels(DeviceObject& object, const ValueRoom& room) {
  return writeValue<UInt32>(room, object.device->info().monitorChannels);
}

OSStatus readIoThreadScheduling(DeviceObject& object, const ValueRoom& room) {
  const pid_t thread = object.registry.ioThread(*object.device);
  const auto scheduling = thread == 0 ? std::nullopt : schedulingOf(thread);
  if (!scheduling) return kAudioHardwareNotRunningError;
  return writeValue(room, TolvaneThreadScheduling{scheduling->policy, scheduling->priority});
}

OSStatus readRehearsal(DeviceObject& /*object*/, const ValueRoom& /*room*/) {
  return kAudioHardwareUnsupportedOperationError;
}

OSStatus writeRehearsal(DeviceObject& object, UInt32 dataSize, const void* data) {
  TolvaneRehearsal rehearsal{};
  if (dataSize != sizeof rehearsal) return kAudioHardwareBadPropertySizeError;
  std::memcpy(&rehearsal, data, sizeof rehearsal);
  return object.device->poller()->driver().setRehearsal(object.device->info(), rehearsal);
}

OSStatus readMemoryLocked(DeviceObject& object, const ValueRoom& room) {
  const auto isLocked = object.registry.isMemoryLocked(*object.device);
  return isLocked ? writeValue<UInt32>(room, *isLocked ? 1 : 0) : OSStatus{kAudioHardwareNotRunningError};
}

template <StreamLayout DeviceInfo::*kStreams>
UInt32 streamsSize(DeviceObject& object) {
  const std::size_t streams = (object.device->info().*kStreams).size();
  return static_cast<UInt32>(BufferList::bytes(streams));
}

template <StreamLayout DeviceInfo::*kStreams>
OSStatus readStreams(DeviceObject& object, const ValueRoom& room) {
  const DeviceInfo info = object.device->info();
  const StreamLayout& streams = info.*kStreams;
  const std::size_t size = BufferList::bytes(streams.size());
  if (*room.dataSize < size) return kAudioHardwareBadPropertySizeError;
  BufferList buffers(streams.size());
  for (std::size_t s = 0; s < streams.size(); ++s) buffers.set(s, streams[s], 0, nullptr);
  // Copied bytewise: the client's buffer may lie at any address.
  std::memcpy(room.data, &buffers.list(), size);
  *room.dataSize = static_cast<UInt32>(size);
  return noErr;
}

template <std::vector<UInt32> RemovedLinks::*kChannels>
UInt32 removedLinksSize(DeviceObject& object) {
  return static_cast<UInt32>((object.device->removedLinks().*kChannels).size() * sizeof(UInt32));
}

template <std::vector<UInt32> RemovedLinks::*kChannels>
OSStatus readRemovedLinks(DeviceObject& object, const ValueRoom& room) {
  return writeArray(room, object.device->removedLinks().*kChannels);
}

constexpr auto kInputs = &DeviceInfo::inputStreams;
constexpr auto kOutputs = &DeviceInfo::outputStreams;

template <auto kChannels, auto kText>
std::string channelText(const DeviceObject& object) {
  return object.device->channelText(kChannels, object.element - 1, kText);
}

template <auto kChannels, auto kText>
bool hasChannelText(DeviceObject& object) {
  return !channelText<kChannels, kText>(object).empty();
}

template <auto kChannels, auto kText>
OSStatus readChannelText(DeviceObject& object, const ValueRoom& room) {
  return writeString(room, channelText<kChannels, kText>(object));
}

using DeviceTable = std::vector<Property<DeviceObject>>;

template <auto kText>
void addChannelText(AudioObjectPropertySelector selector, DeviceTable& table) {
  constexpr auto kIn = &DeviceInfo::inputs;
  constexpr auto kOut = &DeviceInfo::outputs;
  table.push_back({selector, kAudioObjectPropertyScopeInput, sizeOf<CFTypeRef>, readChannelText<kIn, kText>,
                   nullptr, hasChannelText<kIn, kText>});
  table.push_back({selector, kAudioObjectPropertyScopeOutput, sizeOf<CFTypeRef>, readChannelText<kOut, kText>,
                   nullptr, hasChannelText<kOut, kText>});
}

const DeviceTable* withChannelTexts(DeviceTable* table) {
  addChannelText<&ChannelInfo::name>(kAudioObjectPropertyElementName, *table);
  addChannelText<&ChannelInfo::node>(kTolvaneDevicePropertyChannelNode, *table);
  addChannelText<&ChannelInfo::port>(kTolvaneDevicePropertyChannelPort, *table);
  return table;
}

}  // namespace

const std::vector<Property<DeviceObject>>& deviceProperties() {
  static const auto* const table = withChannelTexts(new DeviceTable{
      {kAudioObjectPropertyName, kGlobal, sizeOf<CFTypeRef>, readName, nullptr},
      {kAudioDevicePropertyDeviceUID, kGlobal, sizeOf<CFTypeRef>, readUid, nullptr},
      {kAudioDevicePropertyStreamConfiguration, kAudioObjectPropertyScopeInput, streamsSize<kInputs>,
       readStreams<kInputs>, nullptr},
      {kAudioDevicePropertyStreamConfiguration, kAudioObjectPropertyScopeOutput, streamsSize<kOutputs>,
       readStreams<kOutputs>, nullptr},
      {kAudioDevicePropertyNominalSampleRate, kGlobal, sizeOf<Float64>, readSampleRate, writeSampleRate},
      {kAudioDevicePropertyAvailableNominalSampleRates, kGlobal, sampleRatesSize, readSampleRates, nullptr},
      {kAudioDevicePropertyBufferFrameSize, kGlobal, sizeOf<UInt32>, readBufferFrames, writeBufferFrames},
      {kAudioDevicePropertyBufferFrameSizeRange, kGlobal, sizeOf<AudioValueRange>, readBufferFramesRange,
       nullptr},
      {kAudioDevicePropertyDeviceIsAlive, kGlobal, sizeOf<UInt32>, readAlive, nullptr},
      {kAudioDevicePropertyTransportType, kGlobal, sizeOf<UInt32>, readTransport, nullptr},
      {kAudioDeviceProcessorOverload, kGlobal, sizeOf<UInt32>, readOverloads, nullptr},
      {kTolvaneDevicePropertyPeriods, kGlobal, sizeOf<UInt32>, readPeriods, writePeriods},
      {kTolvaneDevicePropertyPeriodsRange, kGlobal, sizeOf<AudioValueRange>, readPeriodsRange, nullptr},
      {kTolvaneDevicePropertyProAudioCommand, kGlobal, sizeOf<CFTypeRef>, readProAudioCommand, nullptr},
      {kTolvaneDevicePropertyCardUID, kGlobal, sizeOf<CFTypeRef>, readCardUid, nullptr},
      {kTolvaneDevicePropertyMonitorChannels, kGlobal, sizeOf<UInt32>, readMonitorChannels, nullptr},
      {kTolvaneDevicePropertyIOThreadScheduling, kGlobal, sizeOf<TolvaneThreadScheduling>,
       readIoThreadScheduling, nullptr},
      {kTolvaneDevicePropertyRemovedLinks, kAudioObjectPropertyScopeInput,
       removedLinksSize<&RemovedLinks::inputs>, readRemovedLinks<&RemovedLinks::inputs>, nullptr},
      {kTolvaneDevicePropertyRemovedLinks, kAudioObjectPropertyScopeOutput,
       removedLinksSize<&RemovedLinks::outputs>, readRemovedLinks<&RemovedLinks::outputs>, nullptr},
      {kTolvaneDevicePropertyRehearsal, kGlobal, sizeOf<TolvaneRehearsal>, readRehearsal, writeRehearsal},
      {kTolvaneDevicePropertyMemoryLocked, kGlobal, sizeOf<UInt32>, readMemoryLocked, nullptr},
  });
  return *table;
}

}  // namespace tolvane::hal
