// Aggregates of a private server's cards.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "hal/driver/driver.h"
#include "hal/pipewire/listed_devices.h"
#include "support/eventually.h"
#include "support/pipewire_server.h"

namespace tolvane::test {

inline const PipeWireCard kFirst{.name = "first", .inputs = 4, .outputs = 2, .cardId = 901};
inline const PipeWireCard kSecond{.name = "second", .inputs = 2, .outputs = 3, .cardId = 902};

/// The text for a card in an aggregate file.
inline std::string memberText(const PipeWireCard& card) {
  return R"({"uid": "pipewire:)" + card.name + R"(", "name": ")" + card.name + R"(", "inputChannels": )" +
         std::to_string(card.inputs) + R"(, "outputChannels": )" + std::to_string(card.outputs) + "}";
}

/// The text of a file with one aggregate.
inline std::string aggregateText(const std::string& name, const std::vector<PipeWireCard>& cards) {
  std::string members;
  for (const PipeWireCard& card : cards) members += (members.empty() ? "" : ", ") + memberText(card);
  return R"({"aggregates": [{"name": ")" + name + R"(", "members": [)" + members + "]}]}";
}

inline void writeAggregates(const PipeWireServer& server, const std::string& text) {
  const std::filesystem::path folder = server.configFolder() + "/tolvane";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "aggregates.json") << text;
}

/// The device of this name. Waits for it and fails the test if it does not appear.
inline hal::DeviceInfo deviceNamed(hal::Driver& driver, const std::string& name) {
  std::vector<hal::DeviceInfo> devices;
  const auto isHere = [&](const hal::DeviceInfo& device) { return device.name == name; };
  const bool isListed = eventually([&] {
    devices = driver.devices();
    return std::any_of(devices.begin(), devices.end(), isHere);
  });
  if (!isListed) throw std::runtime_error("no device is called " + name);
  return *std::find_if(devices.begin(), devices.end(), isHere);
}

/// The names of the listed devices, once there are `count`.
inline std::vector<std::string> deviceNames(hal::Driver& driver, std::size_t count) {
  std::vector<std::string> names;
  for (hal::DeviceInfo& device : listedDevices(driver, count)) names.push_back(device.name);
  return names;
}

}  // namespace tolvane::test
