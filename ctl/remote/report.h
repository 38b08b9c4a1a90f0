#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace tolvane::ctl::remote {

/// What people read of an answer that is not an error: nothing if it only says that it is done. [not-io]
[[nodiscard]] std::string answerText(const nlohmann::ordered_json& answer);

/// A line about an event; empty for meters. [not-io]
[[nodiscard]] std::string eventText(const nlohmann::ordered_json& event);

}  // namespace tolvane::ctl::remote
