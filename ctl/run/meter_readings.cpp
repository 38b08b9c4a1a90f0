#include "ctl/run/meter_readings.h"

#include <set>

#include "core/routing/sounding_routes.h"
#include "ctl/patch/route_table.h"

namespace tolvane::ctl {

namespace {

std::set<std::int64_t> channelsOf(const SoundingRoutes& routes, std::int64_t PatchConnection::*channel,
                                  std::int64_t deviceChannels) {
  std::set<std::int64_t> channels;
  for (const PatchConnection* route : routes) {
    if (route->*channel >= 0 && route->*channel < deviceChannels) channels.insert(route->*channel);
  }
  return channels;
}

}  // namespace

void readMeters(MeterBank& bank, std::span<const PatchConnection> routes, std::int64_t deviceInputs,
                std::int64_t deviceOutputs, MeterPicture& picture) {
  const SoundingRoutes sounding = soundingRoutes(routes);
  picture.inputs.clear();
  picture.outputs.clear();
  for (const std::int64_t channel : channelsOf(sounding, &PatchConnection::inputChannel, deviceInputs)) {
    picture.inputs.push_back(
        {"in " + oneBased(channel), bank.takeInputPeak(static_cast<std::size_t>(channel))});
  }
  for (const std::int64_t channel : channelsOf(sounding, &PatchConnection::outputChannel, deviceOutputs)) {
    picture.outputs.push_back(
        {"out " + oneBased(channel), bank.takeOutputPeak(static_cast<std::size_t>(channel))});
  }
}

}  // namespace tolvane::ctl
