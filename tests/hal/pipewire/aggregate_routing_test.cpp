// Routed audio through aggregates: every sample, on the right member's output, in the right cycle.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hal/pipewire/aggregate_fixture.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

/// A route to every output, across the members.
std::vector<PatchConnection> across(unsigned inputs, unsigned outputs) {
  std::vector<PatchConnection> routes;
  for (unsigned n = 0; n < outputs; ++n) {
    routes.push_back(
        {static_cast<std::int64_t>((n * 5 + 3) % inputs), static_cast<std::int64_t>(n), 1.0F, true});
  }
  return routes;
}

void routeThrough(const std::string& name, const std::vector<PipeWireCard>& members) {
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo device = deviceNamed(*driver, name);
  const auto routes = across(sumOf(members, &PipeWireCard::inputs), sumOf(members, &PipeWireCard::outputs));
  RoutingClient client(device, routes);
  PatchRig rig(members, routes);
  const hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  ASSERT_TRUE(rig.settle());
  for (const std::uint32_t quantum : {64U, 1024U, 256U}) {
    ASSERT_TRUE(rig.changeQuantum(quantum));
    ASSERT_TRUE(rig.waitForMuch());
    EXPECT_EQ(client.bufferFrames(), quantum);
    EXPECT_TRUE(rig.isRight());
  }
  EXPECT_TRUE(client.isAlive());
}

TEST(PipeWireAggregateRouting, AllInterfacesWhileTheQuantumChanges) {
  const PipeWireServer server({kFirst, kSecond}, PipeWirePace::patient);
  routeThrough("All Interfaces", {kFirst, kSecond});
}

TEST(PipeWireAggregateRouting, ANamedOneInItsOwnOrder) {
  const PipeWireServer server({kFirst, kSecond}, PipeWirePace::patient);
  writeAggregates(server, aggregateText("Stage", {kSecond, kFirst}));
  routeThrough("Stage", {kSecond, kFirst});
}

TEST(PipeWireAggregateRouting, ThreeCardsOfManyChannels) {
  const std::vector<PipeWireCard> cards{{.name = "a", .inputs = 64, .outputs = 8, .cardId = 901},
                                        {.name = "b", .inputs = 1, .outputs = 1, .cardId = 902},
                                        {.name = "c", .inputs = 18, .outputs = 20, .cardId = 903}};
  const PipeWireServer server(cards, PipeWirePace::patient);
  routeThrough("All Interfaces", cards);
}

}  // namespace
}  // namespace tolvane::test
