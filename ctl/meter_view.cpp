#include "ctl/meter_view.h"

#include <cstdio>
#include <set>

#include "ctl/decimal.h"
#include "ctl/patch_source.h"
#include "ctl/route_table.h"

namespace tolvane::ctl {

namespace {

std::set<std::int64_t> channelsOf(std::span<const PatchConnection> routes,
                                  std::int64_t PatchConnection::*channel, std::int64_t deviceChannels) {
  std::set<std::int64_t> channels;
  for (const PatchConnection& route : routes) {
    if (route.*channel >= 0 && route.*channel < deviceChannels) channels.insert(route.*channel);
  }
  return channels;
}

void appendReadings(std::string& line, const std::vector<MeterReading>& readings) {
  for (const MeterReading& reading : readings) {
    if (!line.empty()) line += "  ";
    line += reading.label + " " + decibels(reading.peak) + " dBFS";
  }
}

}  // namespace

void readMeters(MeterBank& bank, std::span<const PatchConnection> routes, std::int64_t deviceInputs,
                std::int64_t deviceOutputs, MeterPicture& picture) {
  const Routes sounding = soundingRoutes(routes);
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

void MeterLines::show(const MeterPicture& picture) {
  std::string line;
  appendReadings(line, picture.inputs);
  appendReadings(line, picture.outputs);
  if (line.empty()) line = "no routed channels";
  std::puts(line.c_str());
  std::fflush(stdout);
}

}  // namespace tolvane::ctl
