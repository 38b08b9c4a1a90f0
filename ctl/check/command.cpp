#include "ctl/check/command.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>

#include "core/patch/patch_file.h"
#include "ctl/devices/channels.h"
#include "ctl/devices/choice.h"
#include "ctl/patch/route_table.h"
#include "ctl/patch/source.h"
#include "ctl/process/resource_check.h"
#include "ctl/terminal/messages.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

/// A failure if an active route has a channel that no device can have, whether or not the route sounds.
std::optional<Failure> impossibleChannel(const std::string& path, const Routes& routes) {
  // A device's channel count is a signed 32-bit number, so its highest possible channel is the maximum - 1.
  const auto isPossible = [](std::int64_t channel) {
    return channel >= 0 && channel < std::numeric_limits<std::int32_t>::max();
  };
  const auto failure = [&](std::size_t element, const char* member, std::int64_t channel) {
    const PatchFileError error{"no device can have the channel number " + std::to_string(channel), element,
                               member, std::nullopt};
    return Failure{about(path, error.message()), ExitStatus::badPatch};
  };
  for (std::size_t i = 0; i < routes.size(); ++i) {
    if (!routes[i].active) continue;
    if (!isPossible(routes[i].inputChannel)) return failure(i, "inputChannel", routes[i].inputChannel);
    if (!isPossible(routes[i].outputChannel)) return failure(i, "outputChannel", routes[i].outputChannel);
  }
  return std::nullopt;
}

ExitStatus checkFile(const std::string& path, const RouteNames& names) {
  const PatchResult routes = loadPatch(path);
  if (!routes) return fail(routes.error());
  if (const auto failure = impossibleChannel(path, routes.value())) return fail(*failure);
  std::printf("%s:\n%s", printable(path).c_str(), routeTable(routes.value(), names).c_str());
  if (const auto note = unheardRoutesNote(path, routes.value())) say(*note);
  return ExitStatus::done;
}

}  // namespace

ExitStatus checkCommand(const CheckOptions& options) {
  ChannelNames names;
  if (!options.device.empty()) {
    if (const auto failure = tooFewResources()) return fail(*failure);
    const DeviceChoice device = awaitDevice(options.device, options.waitSeconds, [] { return false; });
    if (!device) return fail(device.error());
    names.read(device.value());
  }
  ExitStatus worst = ExitStatus::done;  // the numbers rank: badPatch is above failed
  for (const std::string& path : options.paths) worst = std::max(worst, checkFile(path, names.forRoutes()));
  return worst;
}

}  // namespace tolvane::ctl
