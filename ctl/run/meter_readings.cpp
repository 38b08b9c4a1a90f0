#include "ctl/run/meter_readings.h"

#include <set>

#include "core/routing/sounding_routes.h"
#include "ctl/patch/route_table.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

// A label's part on a line; the whole name is in `devices --channels`.
constexpr std::size_t kMostNameCharacters = 40;

std::set<std::int64_t> channelsOf(const SoundingRoutes& routes, std::int64_t PatchConnection::*channel,
                                  std::int64_t deviceChannels) {
  std::set<std::int64_t> channels;
  for (const PatchConnection* route : routes) {
    if (route->*channel >= 0 && route->*channel < deviceChannels) channels.insert(route->*channel);
  }
  return channels;
}

std::string labelOf(const char* direction, std::int64_t channel, const std::string& name) {
  const std::string number = direction + oneBased(channel);
  return name.empty() ? number : number + ' ' + printable(shortened(name, kMostNameCharacters));
}

}  // namespace

void readMeters(MeterBank& bank, std::span<const PatchConnection> routes, const AudioDeviceInfo& device,
                const ChannelNames& names, MeterPicture& picture) {
  const SoundingRoutes sounding = soundingRoutes(routes);
  picture.inputs.clear();
  picture.outputs.clear();
  for (const std::int64_t channel :
       channelsOf(sounding, &PatchConnection::inputChannel, device.inputChannels)) {
    picture.inputs.push_back({labelOf("in ", channel, names.ofInput(channel)),
                              bank.takeInputPeak(static_cast<std::size_t>(channel))});
  }
  for (const std::int64_t channel :
       channelsOf(sounding, &PatchConnection::outputChannel, device.outputChannels)) {
    picture.outputs.push_back({labelOf("out ", channel, names.ofOutput(channel)),
                               bank.takeOutputPeak(static_cast<std::size_t>(channel))});
  }
}

}  // namespace tolvane::ctl
