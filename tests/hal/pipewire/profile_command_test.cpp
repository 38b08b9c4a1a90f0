// A card that is not in its pro-audio profile names the command that puts it there.
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/pipewire_driver.h"
#include "support/pipewire_profiles.h"

namespace tolvane::test {
namespace {

/// The command of the only device in the first list of a new driver.
std::string commandOfAFirstList() {
  const auto driver = hal::makePipeWireDriver();
  return onlyDevice(*driver).proAudioCommand;
}

class PipeWireProfileCommand : public ::testing::Test {
 protected:
  /// Offers a card with these profiles, and its nodes.
  void offer(const std::vector<std::string>& profiles) {
    card_ = std::make_unique<PipeWireProfiles>(client_, "scarlett", profiles);
    client_.addCard({.name = "scarlett", .inputs = 2, .outputs = 2, .cardId = card_->id()});
  }

  PipeWireServer server_{{}};
  PipeWireClient client_;
  std::unique_ptr<PipeWireProfiles> card_;
};

TEST_F(PipeWireProfileCommand, ChangesTheProfileAndIsThenNamedNoMore) {
  offer({"output:analog-stereo", "off", "pro-audio"});
  const std::string command = commandOfAFirstList();
  EXPECT_EQ(command,
            "pw-cli set-param " + std::to_string(card_->id()) + " Profile '{ index: 2, save: true }'");
  const auto driver = hal::makePipeWireDriver();
  EXPECT_EQ(onlyDevice(*driver).proAudioCommand, command);
  ASSERT_EQ(std::system((command + " >/dev/null").c_str()), 0);  // NOLINT(cert-env33-c): a test's own
  EXPECT_TRUE(eventually([&] { return card_->current() == 2; }));
  EXPECT_TRUE(eventually([&] { return onlyDevice(*driver).proAudioCommand.empty(); }));
  EXPECT_EQ(commandOfAFirstList(), "");
}

TEST_F(PipeWireProfileCommand, IsNotNamedForACardWithoutSuchAProfile) {
  offer({"output:analog-stereo", "off"});
  EXPECT_EQ(commandOfAFirstList(), "");
}

}  // namespace
}  // namespace tolvane::test
