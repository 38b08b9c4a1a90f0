#pragma once

#include <string_view>

namespace tolvane::ctl::http {

/// The page that the door serves: HTML that needs no other file. Part of the program. [any-thread]
[[nodiscard]] std::string_view page() noexcept;

}  // namespace tolvane::ctl::http
