// A sound card in an ordinary desktop session, whose manager has every card open.
#include "support/desktop_session.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "alsa_guest/guest_machine.h"
#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "support/eventually.h"

namespace tolvane::test {
namespace {

using nlohmann::json;
constexpr std::chrono::seconds kSlowMachine{120};
const std::string kUid = "alsa:Intel";

/// What the device manager of a desktop tells of a card once it is ready for use. The machine has none.
void tellThatCardsAreReady() {
  const std::string folder = "/run/udev/data";
  std::filesystem::create_directories(folder);
  for (const auto& entry : std::filesystem::directory_iterator("/sys/class/sound")) {
    const std::string name = entry.path().filename();
    if (name.starts_with("card"))
      std::ofstream(folder + "/+sound:" + name) << "I:1\nE:SOUND_INITIALIZED=1\nV:1\n";
  }
}

json devices() {
  return json::parse(ChildProcess({"devices", "--json", "--wait", "20"}).finish().out);
}

/// The listed device with this value of the member; null if there is none.
json deviceWith(const char* member, const std::string& value) {
  for (const json& device : devices()) {
    if (device.at(member) == value) return device;
  }
  return nullptr;
}

/// The session manager follows these folders of the system's login service, and ends without them.
void makeLoginFolders() {
  for (const char* folder : {"machines", "seats", "sessions", "users"}) {
    std::filesystem::create_directories(std::string("/run/systemd/") + folder);
  }
}

class AlsaInADesktopSession : public testing::Test {
 protected:
  AlsaInADesktopSession() {
    tellThatCardsAreReady();
    makeLoginFolders();
    writePatch(patch_, {{0, 0, 1.0F, true}});
  }

  static bool isServers() {
    return eventually(kSlowMachine, [] {
      const json device = deviceWith("cardUid", kUid);
      return !device.is_null() && device.at("driver") == "pipewire";
    });
  }

  const std::string patch_ = "/run/patch.json";
};

TEST_F(AlsaInADesktopSession, ACardIsTakenOverFromTheSessionManagerAndReturned) {
  const DesktopSession session({});
  ASSERT_TRUE(isServers());
  EXPECT_TRUE(deviceWith("uid", kUid).is_null());
  ChildProcess run({"run", "--patch", patch_, "--device", kUid});
  ASSERT_TRUE(run.waitForErr("routing on")) << run.err();
  EXPECT_NE(pcmStatus("Intel", "pcm0p").find("owner_pid"), std::string::npos);
  // The manager takes its devices of the card away.
  EXPECT_TRUE(eventually(kSlowMachine, [] { return deviceWith("cardUid", kUid).is_null(); }));
  run.send(SIGTERM);
  const Finished finished = run.finish();
  EXPECT_EQ(finished.status, 0) << finished.err;
  EXPECT_EQ(finished.out.find("cycles: 0\n"), std::string::npos) << finished.out;
  EXPECT_TRUE(isServers());
}

TEST_F(AlsaInADesktopSession, ACardStaysTheManagersIfNobodyCanAsk) {
  const DesktopSession session({});
  ASSERT_TRUE(isServers());
  ChildProcess::Options options;
  options.environment = {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}};
  const Finished finished = ChildProcess({"run", "--patch", patch_, "--device", kUid}, options).finish();
  EXPECT_EQ(finished.status, 1);
  EXPECT_NE(finished.err.find("alsa:Intel: a sound server uses this card, and there is no session bus"),
            std::string::npos)
      << finished.err;
  EXPECT_TRUE(isServers());
}

}  // namespace
}  // namespace tolvane::test
