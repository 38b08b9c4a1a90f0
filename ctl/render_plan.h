// What a rendering is to be, decided before anything is written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/result.h"
#include "ctl/patch_source.h"
#include "ctl/render_command.h"

namespace tolvane::ctl {

/// The channels of the new file: as asked for, else up to the highest output that a route sounds on. Failure:
/// nothing was asked for and no route sounds; or more than the file can hold. [not-io]
[[nodiscard]] Result<std::int32_t, Failure> outputChannelCount(const RenderOptions& options,
                                                               const Routes& routes);

/// A failure when the new file would replace the recording or the patch. [not-io]
[[nodiscard]] std::optional<Failure> overwritesASource(const RenderOptions& options);

/// One note for each kind of active route that is silent here, because its channel is not there. [not-io]
[[nodiscard]] std::vector<std::string> silentRouteNotes(const Routes& routes, std::int32_t inputChannels,
                                                        std::int32_t outputChannels);

}  // namespace tolvane::ctl
