#include "ctl/soak/process_state.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <thread>

#include <sys/utsname.h>

namespace tolvane::ctl {

namespace {

/// The value of the first line "NAME: value" of a file; none if there is no such line.
std::optional<std::string> valueIn(const char* path, std::string_view name) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || line.compare(0, name.size(), name) != 0) continue;
    const std::size_t begin = line.find_first_not_of(" \t", colon + 1);
    return begin == std::string::npos ? std::string() : line.substr(begin);
  }
  return std::nullopt;
}

std::uint64_t numberIn(const char* path, std::string_view name) {
  std::uint64_t number = 0;
  for (const char digit : valueIn(path, name).value_or("")) {
    if (digit < '0' || digit > '9') break;
    number = number * 10 + static_cast<std::uint64_t>(digit - '0');
  }
  return number;
}

}  // namespace

std::optional<ProcessState> processState() {
  constexpr const char* kStatus = "/proc/self/status";
  std::error_code error;
  std::filesystem::directory_iterator files("/proc/self/fd", error);
  if (error) return std::nullopt;
  // The iterator itself has one of the descriptors open.
  const auto descriptors = static_cast<std::uint64_t>(std::distance(begin(files), end(files))) - 1;
  return ProcessState{numberIn(kStatus, "VmRSS"), descriptors, numberIn(kStatus, "Threads")};
}

std::vector<std::pair<std::string, std::string>> machineFacts() {
  std::vector<std::pair<std::string, std::string>> facts;
  utsname system{};
  if (::uname(&system) == 0) {
    facts.emplace_back("system", std::string(system.sysname) + " " + system.release + " " + system.machine);
    facts.emplace_back("host", system.nodename);
  }
  if (const auto model = valueIn("/proc/cpuinfo", "model name")) facts.emplace_back("processor", *model);
  facts.emplace_back("processors", std::to_string(std::thread::hardware_concurrency()));
  if (const auto memory = valueIn("/proc/meminfo", "MemTotal")) facts.emplace_back("memory", *memory);
  return facts;
}

}  // namespace tolvane::ctl
