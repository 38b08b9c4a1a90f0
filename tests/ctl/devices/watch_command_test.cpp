// tolvanectl devices --watch: cards come and go on a private server.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ctl/support/child_process.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;

/// Everything after the first line that contains `text`.
std::string after(const std::string& whole, const std::string& text) {
  const std::size_t at = whole.find(text);
  return at == std::string::npos ? "" : whole.substr(whole.find('\n', at) + 1);
}

class DevicesWatch : public testing::TestWithParam<int> {
 protected:
  PipeWireServer server_{{{.name = "Stays", .inputs = 2, .outputs = 2, .cardId = 76}}};
  PipeWireClient client_;
  const PipeWireCard visitor_{.name = "Visitor", .inputs = 3};
};

TEST_P(DevicesWatch, TellsOfArrivalAndDepartureUntilTheSignal) {
  ChildProcess child({"devices", "--watch"});
  ASSERT_TRUE(child.waitForOut("Tolvane Virtual Device"));
  EXPECT_THAT(child.out(), HasSubstr("Stays"));
  client_.addCard(visitor_);
  ASSERT_TRUE(child.waitForOut("arrived: "));
  client_.removeCard(visitor_);
  ASSERT_TRUE(child.waitForOut("departed: "));
  child.send(GetParam());
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  const std::string events = after(run.out, "Tolvane Virtual Device");
  EXPECT_THAT(events,
              testing::MatchesRegex("arrived: [0-9]+  Visitor  \\(3 inputs, 0 outputs, pipewire\\)\n"
                                    "departed: [0-9]+  Visitor  \\(3 inputs, 0 outputs, pipewire\\)\n"));
}

INSTANTIATE_TEST_SUITE_P(Signals, DevicesWatch, testing::Values(SIGINT, SIGTERM));

/// The output's complete lines, each parsed as JSON.
std::vector<json> objects(const std::string& out) {
  std::vector<json> objects;
  for (std::size_t at = 0, end = 0; (end = out.find('\n', at)) != std::string::npos; at = end + 1) {
    objects.push_back(json::parse(out.substr(at, end - at)));
  }
  return objects;
}

using DevicesWatchJson = DevicesWatch;

TEST_P(DevicesWatchJson, IsAnObjectALine) {
  ChildProcess child({"devices", "--watch", "--json"});
  ASSERT_TRUE(child.waitForOut("Tolvane Virtual Device"));
  client_.addCard(visitor_);
  ASSERT_TRUE(child.waitForOut("arrived"));
  client_.removeCard(visitor_);
  ASSERT_TRUE(child.waitForOut("departed"));
  child.send(GetParam());
  EXPECT_EQ(child.finish().status, 0);
  std::vector<std::string> told;
  for (const json& object : objects(child.out())) {
    EXPECT_EQ(object.size(), 10U) << object;
    told.push_back(object.at("event").get<std::string>() + ' ' + object.at("name").get<std::string>());
  }
  EXPECT_THAT(told, testing::ElementsAre("present Stays", "present Tolvane Virtual Device", "arrived Visitor",
                                         "departed Visitor"));
  const json arrival = objects(child.out()).at(2);
  EXPECT_EQ(arrival.at("inputChannels"), 3);
  EXPECT_EQ(arrival.at("outputChannels"), 0);
  EXPECT_EQ(arrival.at("driver"), "pipewire");
}

INSTANTIATE_TEST_SUITE_P(Signals, DevicesWatchJson, testing::Values(SIGINT));

}  // namespace
}  // namespace tolvane::test
