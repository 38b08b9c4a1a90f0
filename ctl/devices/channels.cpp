#include "ctl/devices/channels.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

#include "ctl/devices/device_json.h"
#include "ctl/terminal/json_text.h"
#include "ctl/terminal/printable.h"
#include "ctl/terminal/text_table.h"
#include "engine/device_text.h"

namespace tolvane::ctl {

namespace {

using Json = nlohmann::ordered_json;

std::vector<ChannelDetails> readChannels(const AudioDeviceInfo& device, bool areInputs) {
  std::vector<ChannelDetails> channels;
  const std::int64_t count = areInputs ? device.inputChannels : device.outputChannels;
  for (std::int64_t channel = 0; channel < count; ++channel) {
    channels.push_back({channelName(device.id, areInputs, channel),
                        channelText(device.id, areInputs, channel, kTolvaneDevicePropertyChannelNode),
                        channelText(device.id, areInputs, channel, kTolvaneDevicePropertyChannelPort)});
  }
  return channels;
}

void addChannels(const std::string& device, const char* direction,
                 const std::vector<ChannelDetails>& channels, TextTable& table) {
  const auto cell = [](const std::optional<std::string>& text) { return shortened(text.value_or("-")); };
  for (std::size_t c = 0; c < channels.size(); ++c) {
    const ChannelDetails& channel = channels[c];
    table.addRow({device, direction + std::to_string(c + 1), cell(channel.name), cell(channel.node),
                  cell(channel.port)});
  }
}

Json channelArray(const std::vector<ChannelDetails>& channels) {
  Json array = Json::array();
  for (std::size_t c = 0; c < channels.size(); ++c) {
    array.push_back({{"channel", c},
                     {"name", orNull(channels[c].name)},
                     {"node", orNull(channels[c].node)},
                     {"port", orNull(channels[c].port)}});
  }
  return array;
}

void readNames(AudioDeviceID device, bool areInputs, std::int64_t count, std::vector<std::string>& names) {
  names.resize(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
  for (std::size_t c = 0; c < names.size(); ++c) {
    if (auto name = channelName(device, areInputs, static_cast<std::int64_t>(c))) names[c] = *std::move(name);
  }
}

const std::string& nameIn(const std::vector<std::string>& names, std::int64_t channel) noexcept {
  static const std::string none;
  const bool isThere = channel >= 0 && static_cast<std::uint64_t>(channel) < names.size();
  return isThere ? names[static_cast<std::size_t>(channel)] : none;
}

}  // namespace

std::vector<DeviceChannels> channelDetailsOf(const std::vector<AudioDeviceInfo>& devices) {
  std::vector<DeviceChannels> channels;
  for (DeviceDetails& device : detailsOf(devices)) {
    const AudioDeviceInfo info = device.info;
    channels.push_back({std::move(device), readChannels(info, true), readChannels(info, false)});
  }
  return channels;
}

std::string channelTable(const std::vector<DeviceChannels>& devices) {
  TextTable table({{"device"}, {"channel"}, {"name"}, {"node"}, {"port"}});
  for (const DeviceChannels& device : devices) {
    addChannels(device.device.info.name, "in ", device.inputs, table);
    addChannels(device.device.info.name, "out ", device.outputs, table);
  }
  return table.text();
}

std::string channelJson(const std::vector<DeviceChannels>& devices) {
  Json array = Json::array();
  for (const DeviceChannels& device : devices) {
    Json object = jsonOf(device.device);
    object["inputs"] = channelArray(device.inputs);
    object["outputs"] = channelArray(device.outputs);
    array.push_back(std::move(object));
  }
  return jsonText(array, 2);
}

void ChannelNames::read(const AudioDeviceInfo& device) {
  readNames(device.id, true, device.inputChannels, inputs_);
  readNames(device.id, false, device.outputChannels, outputs_);
}

RouteNames ChannelNames::forRoutes() const {
  return {[this](std::int64_t channel) { return ofInput(channel); },
          [this](std::int64_t channel) { return ofOutput(channel); }};
}

const std::string& ChannelNames::ofInput(std::int64_t channel) const noexcept {
  return nameIn(inputs_, channel);
}

const std::string& ChannelNames::ofOutput(std::int64_t channel) const noexcept {
  return nameIn(outputs_, channel);
}

}  // namespace tolvane::ctl
