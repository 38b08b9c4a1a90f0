#include "ctl/devices/list.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "ctl/devices/device_json.h"
#include "ctl/devices/property.h"
#include "ctl/terminal/decimal.h"
#include "ctl/terminal/json_text.h"
#include "ctl/terminal/printable.h"
#include "ctl/terminal/text_table.h"
#include "engine/device_text.h"

namespace tolvane::ctl {

namespace {

constexpr std::uint32_t code(const char (&text)[5]) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8U | static_cast<unsigned char>(text[i]);
  return value;
}

struct Transport {
  std::uint32_t type;
  const char* name;
};

// One table for every system: a code means the same on all of them.
constexpr Transport kTransports[] = {
    {code("virt"), "virtual"},    {code("jack"), "jack"},        {code("pipw"), "pipewire"},
    {code("alsa"), "alsa"},       {code("grup"), "aggregate"},   {code("fgrp"), "aggregate"},
    {code("bltn"), "built-in"},   {code("usb "), "usb"},         {code("pci "), "pci"},
    {code("1394"), "firewire"},   {code("blue"), "bluetooth"},   {code("blea"), "bluetooth-le"},
    {code("hdmi"), "hdmi"},       {code("dprt"), "displayport"}, {code("airp"), "airplay"},
    {code("eavb"), "avb"},        {code("thun"), "thunderbolt"}, {code("ccwd"), "continuity"},
    {code("ccwl"), "continuity"},
};

std::string orDash(const std::optional<std::string>& text) {
  return text.value_or("-");
}

/// What else the user can do with the device, in lines.
std::string adviceOn(const DeviceDetails& device) {
  std::string text;
  const auto add = [&](const std::string& sentence, const std::string& answer) {
    text += "\n" + about(device.info.name, sentence + "\n  " + answer + "\n");
  };
  if (!device.proAudioCommand.empty()) {
    add("is not in its pro-audio profile, which has all channels, in order and untouched. To change the "
        "profile:",
        device.proAudioCommand);
  }
  if (!device.cardUid.empty()) {
    add("can be used without the sound server. The server releases the card if you run:",
        printable(device.cardUid));
  }
  return text;
}

std::string counted(std::int64_t count, const std::string& unit) {
  return std::to_string(count) + ' ' + unit + (count == 1 ? "" : "s");
}

}  // namespace

nlohmann::ordered_json jsonOf(const DeviceDetails& device) {
  const auto uid = device.uid.empty() ? std::nullopt : std::optional(device.uid);
  return {{"id", device.info.id},
          {"uid", orNull(uid)},
          {"name", device.info.name},
          {"inputChannels", device.info.inputChannels},
          {"outputChannels", device.info.outputChannels},
          {"driver", device.driver},
          {"sampleRate", orNull(device.sampleRateHz)},
          {"bufferFrames", orNull(device.bufferFrames)},
          {"cardUid", orNull(device.cardUid.empty() ? std::nullopt : std::optional(device.cardUid))}};
}

std::string transportName(std::uint32_t transportType) {
  const auto* const known = std::find_if(std::begin(kTransports), std::end(kTransports),
                                         [=](const Transport& t) { return t.type == transportType; });
  if (known != std::end(kTransports)) return known->name;
  std::string characters;
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    const auto byte = static_cast<unsigned char>(transportType >> shift & 0xFFU);
    if (byte < 0x20 || byte > 0x7E) return "unknown";
    characters += static_cast<char>(byte);
  }
  return characters;
}

std::vector<DeviceDetails> detailsOf(const std::vector<AudioDeviceInfo>& devices) {
  std::vector<DeviceDetails> details;
  for (const AudioDeviceInfo& info : devices) {
    const auto transport = deviceProperty<UInt32>(info.id, kAudioDevicePropertyTransportType);
    details.push_back({info, transportName(transport.value_or(0)),
                       deviceProperty<Float64>(info.id, kAudioDevicePropertyNominalSampleRate),
                       deviceProperty<UInt32>(info.id, kAudioDevicePropertyBufferFrameSize),
                       deviceText(info.id, kAudioDevicePropertyDeviceUID).value_or(""),
                       deviceText(info.id, kTolvaneDevicePropertyProAudioCommand).value_or(""),
                       deviceText(info.id, kTolvaneDevicePropertyCardUID).value_or("")});
  }
  return details;
}

std::string deviceTable(const std::vector<DeviceDetails>& devices, TableForm form) {
  using enum TextTable::Align;
  std::vector<TextTable::Column> columns{{"id", right},           {"name", left},   {"inputs", right},
                                         {"outputs", right},      {"driver", left}, {"sample rate", right},
                                         {"buffer frames", right}};
  // Last, so that the other columns stay where they are.
  if (form == TableForm::longer) columns.push_back({"uid", left});
  TextTable table(std::move(columns));
  for (const DeviceDetails& device : devices) {
    std::optional<std::string> rate;
    std::optional<std::string> frames;
    if (device.sampleRateHz) rate = plainDecimal(*device.sampleRateHz);
    if (device.bufferFrames) frames = std::to_string(*device.bufferFrames);
    table.addRow({std::to_string(device.info.id), device.info.name, std::to_string(device.info.inputChannels),
                  std::to_string(device.info.outputChannels), device.driver, orDash(rate), orDash(frames),
                  device.uid.empty() ? "-" : device.uid});
  }
  std::string text = table.text();
  if (form != TableForm::longer) return text;
  for (const DeviceDetails& device : devices) text += adviceOn(device);
  return text;
}

std::string deviceJson(const std::vector<DeviceDetails>& devices) {
  auto array = nlohmann::ordered_json::array();
  for (const DeviceDetails& device : devices) array.push_back(jsonOf(device));
  return jsonText(array, 2);
}

std::string deviceEventLine(const std::string& event, const DeviceDetails& device, TableForm form) {
  const AudioDeviceInfo& info = device.info;
  const std::string uid = form == TableForm::longer ? "  " + printable(device.uid) : "";
  return event + ": " + std::to_string(info.id) + "  " + printable(info.name) + "  (" +
         counted(info.inputChannels, "input") + ", " + counted(info.outputChannels, "output") + ", " +
         device.driver + ")" + uid + "\n";
}

std::string deviceEventJson(const std::string& event, const DeviceDetails& device) {
  nlohmann::ordered_json object = {{"event", event}};
  object.update(jsonOf(device));
  return jsonText(object, -1);
}

}  // namespace tolvane::ctl
