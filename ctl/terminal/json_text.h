#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace tolvane::ctl {

/// The JSON text for standard output, followed by a line feed; one line if `indent` is -1. Control characters
/// are escaped, including U+007F to U+009F, which a terminal would obey. Invalid UTF-8 becomes U+FFFD.
/// [not-io]
[[nodiscard]] std::string jsonText(const nlohmann::ordered_json& json, int indent);

}  // namespace tolvane::ctl
