// What the process uses, and the machine that it runs on, as the system tells it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tolvane::ctl {

struct ProcessState {
  std::uint64_t memoryKiB = 0;  // in RAM
  std::uint64_t descriptors = 0;
  std::uint64_t threads = 0;
};

/// None where the system does not tell. [not-io]
[[nodiscard]] std::optional<ProcessState> processState();

/// Names and values, such as "processor" and its model. [not-io]
[[nodiscard]] std::vector<std::pair<std::string, std::string>> machineFacts();

}  // namespace tolvane::ctl
