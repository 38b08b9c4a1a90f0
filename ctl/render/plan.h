// Decisions and checks before a rendering writes anything.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "ctl/patch/source.h"
#include "ctl/render/options.h"

namespace tolvane::ctl {

/// The channel count of the new file: the one asked for, else up to the highest output of a sounding route.
/// Failure: none was asked for, and no route sounds or the highest output is beyond what a file can hold.
/// [not-io]
[[nodiscard]] Result<std::int32_t, Failure> outputChannelCount(const RenderOptions& options,
                                                               const Routes& routes);

/// A failure if the new file would replace the recording or the patch. [not-io]
[[nodiscard]] std::optional<Failure> overwritesASource(const RenderOptions& options);

/// Notes on the active routes that are silent because a file lacks their channel: at most one note for the
/// inputs and one for the outputs. [not-io]
[[nodiscard]] std::vector<std::string> silentRouteNotes(const Routes& routes, std::int32_t inputChannels,
                                                        std::int32_t outputChannels);

}  // namespace tolvane::ctl
