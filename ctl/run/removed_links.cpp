#include "ctl/run/removed_links.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace tolvane::ctl {

namespace {

using Channels = std::set<std::uint32_t>;

Channels readChannels(AudioDeviceID device, AudioObjectPropertyScope scope) {
  const AudioObjectPropertyAddress address{kTolvaneDevicePropertyRemovedLinks, scope,
                                           kAudioObjectPropertyElementMain};
  UInt32 size = 0;
  if (AudioObjectGetPropertyDataSize(device, &address, 0, nullptr, &size) != noErr) return {};
  std::vector<UInt32> channels(size / sizeof(UInt32) + 1);  // one more: the data pointer must not be null
  size = static_cast<UInt32>(channels.size() * sizeof(UInt32));
  if (AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, channels.data()) != noErr) return {};
  channels.resize(size / sizeof(UInt32));
  return {channels.begin(), channels.end()};
}

Channels added(const Channels& before, const Channels& now) {
  Channels difference;
  std::set_difference(now.begin(), now.end(), before.begin(), before.end(),
                      std::inserter(difference, difference.end()));
  return difference;
}

/// "input 3", or "inputs 1-4, 7"; empty without channels.
std::string channelsText(const char* noun, const Channels& channels) {
  if (channels.empty()) return {};
  std::string text = noun + std::string(channels.size() == 1 ? "" : "s");
  for (auto at = channels.begin(); at != channels.end();) {
    const std::uint32_t first = *at;
    std::uint32_t last = first;
    while (++at != channels.end() && *at == last + 1) ++last;
    text += (first == *channels.begin() ? " " : ", ") + std::to_string(first + 1);
    if (last != first) text += '-' + std::to_string(last + 1);
  }
  return text;
}

}  // namespace

RemovedChannels removedChannelsOf(AudioDeviceID device) {
  return {readChannels(device, kAudioObjectPropertyScopeInput),
          readChannels(device, kAudioObjectPropertyScopeOutput)};
}

std::optional<std::string> removedLinksNote(const RemovedChannels& before, const RemovedChannels& now) {
  const Channels inputs = added(before.inputs, now.inputs);
  const Channels outputs = added(before.outputs, now.outputs);
  if (inputs.empty() && outputs.empty()) return std::nullopt;
  const bool isOne = inputs.size() + outputs.size() == 1;
  return std::string("somebody has removed the ") + (isOne ? "link of " : "links of ") +
         channelsText("input", inputs) + (inputs.empty() || outputs.empty() ? "" : " and ") +
         channelsText("output", outputs) + (isOne ? "; it stays" : "; they stay") +
         " removed until the next start, or until the device has been away";
}

}  // namespace tolvane::ctl
