// What the program lists while sound servers use some of the machine's cards.
#include <csignal>
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ctl/support/child_process.h"
#include "support/eventually.h"
#include "support/jack_server.h"
#include "support/pipewire_server.h"

namespace tolvane::test {
namespace {

using testing::UnorderedElementsAre;

/// The devices listed now, as "driver: name", each as often as it is listed. Read from a program that follows
/// the list: the machine is slow, and a driver that is not ready in time is listed later.
std::multiset<std::string> listed(const ChildProcess& watching) {
  std::multiset<std::string> devices;
  const std::string lines = watching.out();
  for (std::size_t at = 0, end = 0; (end = lines.find('\n', at)) != std::string::npos; at = end + 1) {
    const auto line = nlohmann::json::parse(lines.substr(at, end - at));
    const std::string device =
        line.at("driver").get<std::string>() + ": " + line.at("name").get<std::string>();
    if (line.at("event") == "departed") {
      devices.erase(devices.find(device));
    } else {
      devices.insert(device);
    }
  }
  return devices;
}

TEST(AlsaBesideServers, EveryCardIsListedExactlyOnce) {
  const auto expectListed = [](const testing::Matcher<std::multiset<std::string>>& wanted) {
    ChildProcess watching({"devices", "--watch", "--json"});
    eventually(std::chrono::seconds(60), [&] { return testing::Value(listed(watching), wanted); });
    // Wait for devices that should not come.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    watching.send(SIGTERM);
    EXPECT_EQ(watching.finish().status, 0);
    EXPECT_THAT(listed(watching), wanted);
  };
  expectListed(UnorderedElementsAre("alsa: HDA Intel", "alsa: Loopback", "alsa: Dummy",
                                    "virtual: Tolvane Virtual Device"));
  const PipeWireServer pipewire(
      {{.name = "loop", .inputs = 2, .outputs = 2, .description = "Loop", .cardId = 900, .alsaPcm = "hw:5"}});
  expectListed(UnorderedElementsAre("pipewire: Loop", "alsa: HDA Intel", "alsa: Dummy",
                                    "virtual: Tolvane Virtual Device"));
  const JackServer jack(1024, "hw:Intel");
  expectListed(UnorderedElementsAre("pipewire: Loop", "jack: system", "alsa: Dummy",
                                    "virtual: Tolvane Virtual Device"));
}

}  // namespace
}  // namespace tolvane::test
