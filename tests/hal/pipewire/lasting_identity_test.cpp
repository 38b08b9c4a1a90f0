// The lasting identities of cards of one kind, whatever the order in which they are plugged in.
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hal/pipewire/aggregate_list.h"
#include "hal/pipewire/device_list.h"
#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/pipewire_driver.h"
#include "support/pipewire_server.h"

namespace tolvane::test {
namespace {

using hal::UsbCard;
using hal::pipewire::DeviceList;
using hal::pipewire::Graph;
using hal::pipewire::ListedDevice;

/// A card as the server finds it.
struct Plugged {
  std::string serverName;  // with the session manager's number if the name is taken
  UsbCard usb;
};

const UsbCard kLeft{"1235:8215", "", "0000:00:14.0-usb-2", "00"};
const UsbCard kRight{"1235:8215", "", "0000:00:14.0-usb-3", "00"};

/// The graph of these cards, with ALSA's numbers in this order.
Graph graphOf(const std::vector<Plugged>& cards) {
  Graph graph;
  for (std::uint32_t c = 0; c < cards.size(); ++c) {
    graph.cards[10 + c] = {.serial = 10 + c, .name = cards[c].serverName, .description = "Box"};
    hal::pipewire::GraphNode& sink = graph.nodes[20 + c];
    sink.serial = 20 + c;
    sink.name = cards[c].serverName + ".sink";
    sink.mediaClass = "Audio/Sink";
    sink.cardId = 10 + c;
    sink.hasAnswered = true;
    sink.alsaCard = static_cast<int>(c);
    sink.channels = 1;
    sink.inputPorts = 1;
    graph.ports[30 + c] = {.nodeId = 20 + c, .isInput = true, .isAudio = true, .name = "playback_1"};
  }
  return graph;
}

std::vector<ListedDevice> listed(const std::vector<Plugged>& cards) {
  DeviceList list([&](int number) { return std::optional(cards.at(static_cast<std::size_t>(number)).usb); });
  return list.build(graphOf(cards), {});
}

/// The uid of the card that is plugged in at this place.
std::map<std::string, std::string> uidsByPlace(const std::vector<Plugged>& cards) {
  const std::vector<ListedDevice> devices = listed(cards);
  std::map<std::string, std::string> uids;
  for (std::size_t d = 0; d < devices.size(); ++d) uids[cards[d].usb.busPath] = devices[d].info.uid;
  return uids;
}

TEST(PipeWireIdentity, OfTwinsWithoutSerialNumbersIsByTheirPlaces) {
  const auto uids = uidsByPlace({{"alsa_card.usb-Box-00", kLeft}, {"alsa_card.usb-Box-00.2", kRight}});
  EXPECT_EQ(uids.at(kLeft.busPath), "pipewire:alsa_card.usb-Box-00@0000:00:14.0-usb-2");
  EXPECT_EQ(uids.at(kRight.busPath), "pipewire:alsa_card.usb-Box-00@0000:00:14.0-usb-3");
  EXPECT_EQ(uidsByPlace({{"alsa_card.usb-Box-00", kRight}, {"alsa_card.usb-Box-00.2", kLeft}}), uids);
  EXPECT_EQ(uidsByPlace({{"alsa_card.usb-Box-00", kRight}}).at(kRight.busPath), uids.at(kRight.busPath));
}

TEST(PipeWireIdentity, OfACardWithASerialNumberIsByItsName) {
  UsbCard numbered = kLeft;
  numbered.serial = "A1";
  EXPECT_EQ(listed({{"alsa_card.usb-Box_A1-00", numbered}}).at(0).info.uid,
            "pipewire:alsa_card.usb-Box_A1-00");
  DeviceList notUsb([](int) { return std::nullopt; });
  EXPECT_EQ(notUsb.build(graphOf({{"alsa_card.pci-0000_00_1f.3", {}}}), {}).at(0).info.uid,
            "pipewire:alsa_card.pci-0000_00_1f.3");
}

TEST(PipeWireIdentity, OfAnAggregateFromBeforeStillFindsItsCard) {
  const auto devices = listed({{"alsa_card.usb-Box-00", kLeft}, {"alsa_card.usb-Box-00.2", kRight}});
  const std::vector<hal::Aggregate> named{{"Stage", {{"pipewire:alsa_card.usb-Box-00.2", "Box", 0, 1}}}};
  const auto aggregates = hal::pipewire::aggregatesOf(devices, named, [](const auto&) { return nullptr; });
  ASSERT_EQ(aggregates.back().info.name, "Stage");
  EXPECT_EQ(aggregates.back().outputs.at(0).deviceUid, devices.at(1).info.uid);
}

// A server that was started again counts its objects anew, and may find the cards in another order.
TEST(PipeWireIdentity, IsTheSameInAnotherServer) {
  const PipeWireCard desk{.name = "desk", .inputs = 1, .outputs = 1, .cardId = 901};
  const PipeWireCard stage{.name = "stage", .inputs = 2, .outputs = 2, .cardId = 902};
  PipeWireServer server({desk, stage});
  const auto driver = hal::makePipeWireDriver();
  const auto outputsByUid = [&] {
    std::map<std::string, std::size_t> outputs;
    for (const hal::DeviceInfo& device : plainDevices(*driver, 2)) {
      outputs[device.uid] = device.outputStreams.size();
    }
    return outputs;
  };
  const auto before = outputsByUid();
  ASSERT_EQ(before.size(), 2U);
  server.kill();
  server.start({{.name = "stage", .inputs = 2, .outputs = 2, .cardId = 901},
                {.name = "desk", .inputs = 1, .outputs = 1, .cardId = 902}});
  EXPECT_EQ(outputsByUid(), before);
}

}  // namespace
}  // namespace tolvane::test
