#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace tolvane::ctl {

/// The JSON text for standard output, ended by a line feed; on one line when `indent` is -1. Control
/// characters are escaped, those above U+007E too, which a terminal would heed; bytes that are not UTF-8
/// come out as U+FFFD. [not-io]
[[nodiscard]] std::string jsonText(const nlohmann::ordered_json& json, int indent);

}  // namespace tolvane::ctl
