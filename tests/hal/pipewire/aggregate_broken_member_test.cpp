// An aggregate with a card that is listed but cannot be used.
#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <spa/param/audio/format-utils.h>

#include "hal/pipewire/aggregate_fixture.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/pipewire_headers.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

/// A card with two outputs that accept no existing format, so that no link to them comes up.
class BrokenCard {
 public:
  explicit BrokenCard(PipeWireClient& client) : client_(client) {
    pw_thread_loop_lock(client_.loop());
    filter_ = pw_filter_new(client_.core(), "broken",
                            properties<4>({{{PW_KEY_NODE_NAME, "broken.sink"},
                                            {PW_KEY_MEDIA_CLASS, "Audio/Sink"},
                                            {PW_KEY_DEVICE_NAME, "broken"},
                                            {PW_KEY_AUDIO_CHANNELS, "2"}}}));
    std::array<std::byte, 1024> room{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, room.data(), room.size());
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_S16;
    format.rate = 1234;
    format.channels = 1;
    const spa_pod* param = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    for (int port = 0; port < 2; ++port) {
      pw_filter_add_port(filter_, PW_DIRECTION_INPUT, PW_FILTER_PORT_FLAG_NONE, 0,
                         properties<1>({{{PW_KEY_FORMAT_DSP, "audio of no kind"}}}), &param, 1);
    }
    pw_filter_connect(filter_, PW_FILTER_FLAG_NONE, nullptr, 0);
    pw_thread_loop_unlock(client_.loop());
  }
  ~BrokenCard() {
    pw_thread_loop_lock(client_.loop());
    pw_filter_destroy(filter_);
    pw_thread_loop_unlock(client_.loop());
  }
  BrokenCard(const BrokenCard&) = delete;
  BrokenCard& operator=(const BrokenCard&) = delete;

 private:
  template <std::size_t count>
  static pw_properties* properties(const std::array<spa_dict_item, count>& items) {
    const spa_dict dictionary{0, static_cast<std::uint32_t>(count), items.data()};
    return pw_properties_new_dict(&dictionary);
  }

  PipeWireClient& client_;
  pw_filter* filter_ = nullptr;
};

TEST(PipeWireAggregateBrokenMember, DoesNotKeepTheOthersFromPlaying) {
  const PipeWireServer server({kFirst, kSecond});
  PipeWireClient hardware;
  const BrokenCard broken(hardware);
  writeAggregates(server, aggregateText("Stage", {kFirst, kSecond, {.name = "broken", .outputs = 2}}));
  const auto driver = hal::makePipeWireDriver();
  ASSERT_EQ(deviceNamed(*driver, "broken.sink").uid, "pipewire:broken");
  const hal::DeviceInfo stage = deviceNamed(*driver, "Stage");
  const std::vector<PatchConnection> routes{{5, 0, 1.0F, true}, {0, 4, 1.0F, true}, {1, 6, 1.0F, true}};
  RoutingClient client(stage, routes);
  const hal::StartResult started = driver->start(stage, client);
  ASSERT_EQ(started.status, noErr);
  PatchRig rig({kFirst, kSecond}, {routes[0], routes[1]});
  EXPECT_TRUE(rig.settle());
  EXPECT_TRUE(client.isAlive());
}

}  // namespace
}  // namespace tolvane::test
