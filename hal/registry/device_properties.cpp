#include "hal/core_audio.h"
#include "hal/driver/buffer_list.h"
#include "hal/registry/properties.h"
#include "hal/registry/value_room.h"
#include "hal/support/realtime.h"
#include "hal/surface/io_thread_scheduling.h"

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
  return object.registry.setBufferFrames(object.device, frames);
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

OSStatus readIoThreadScheduling(DeviceObject& object, const ValueRoom& room) {
  const pid_t thread = object.registry.ioThread(*object.device);
  const auto scheduling = thread == 0 ? std::nullopt : schedulingOf(thread);
  if (!scheduling) return kAudioHardwareNotRunningError;
  return writeValue(room, TolvaneThreadScheduling{scheduling->policy, scheduling->priority});
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
      {kAudioDevicePropertyNominalSampleRate, kGlobal, sizeOf<Float64>, readSampleRate, nullptr},
      {kAudioDevicePropertyBufferFrameSize, kGlobal, sizeOf<UInt32>, readBufferFrames, writeBufferFrames},
      {kAudioDevicePropertyBufferFrameSizeRange, kGlobal, sizeOf<AudioValueRange>, readBufferFramesRange,
       nullptr},
      {kAudioDevicePropertyDeviceIsAlive, kGlobal, sizeOf<UInt32>, readAlive, nullptr},
      {kAudioDevicePropertyTransportType, kGlobal, sizeOf<UInt32>, readTransport, nullptr},
      {kAudioDeviceProcessorOverload, kGlobal, sizeOf<UInt32>, readOverloads, nullptr},
      {kTolvaneDevicePropertyIOThreadScheduling, kGlobal, sizeOf<TolvaneThreadScheduling>,
       readIoThreadScheduling, nullptr},
  });
  return *table;
}

}  // namespace tolvane::hal
