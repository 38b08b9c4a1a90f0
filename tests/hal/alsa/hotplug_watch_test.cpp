// Cards that come and go, as their device files show it.
#include "hal/alsa/hotplug_watch.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/eventually.h"

namespace tolvane::hal::alsa {
namespace {

namespace fs = std::filesystem;

/// A folder of device files in place of /dev.
class HotplugWatchTest : public testing::Test {
 protected:
  HotplugWatchTest() {
    mkdtemp(devices_.data());
    fs::create_directory(devices_ + "/snd");
  }
  ~HotplugWatchTest() override { fs::remove_all(devices_); }

  void add(const std::string& file) const { std::ofstream(devices_ + "/snd/" + file).put('x'); }

  std::string devices_ = (fs::temp_directory_path() / "tolvane-dev-XXXXXX").string();
  std::atomic<int> changes_{0};
};

TEST_F(HotplugWatchTest, TellsOfACardThatComesAndOfOneThatGoes) {
  const HotplugWatch watch([this] { ++changes_; }, [] { return false; }, devices_);
  add("pcmC3D0p");
  ASSERT_TRUE(test::eventually([this] { return changes_ == 1; }));
  fs::remove(devices_ + "/snd/pcmC3D0p");
  EXPECT_TRUE(test::eventually([this] { return changes_ == 2; }));
}

TEST_F(HotplugWatchTest, TellsOfTheFirstCard) {
  fs::remove_all(devices_ + "/snd");
  const HotplugWatch watch([this] { ++changes_; }, [] { return false; }, devices_);
  fs::create_directory(devices_ + "/snd");
  EXPECT_TRUE(test::eventually([this] { return changes_ >= 1; }));
}

TEST_F(HotplugWatchTest, TellsOfNothingElse) {
  const HotplugWatch watch([this] { ++changes_; }, [] { return false; }, devices_);
  std::ofstream(devices_ + "/loop7").put('x');
  add("timer");
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_EQ(changes_, 0);
}

TEST_F(HotplugWatchTest, TellsOfACardWhoseEventWasLostAmongTooMany) {
  int limit = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
  ASSERT_GT(limit, 0);
  std::promise<void> flooded;
  const HotplugWatch watch(
      [&] {
        if (++changes_ == 1) flooded.get_future().wait();
      },
      [] { return false; }, devices_);
  add("pcmC3D0p");
  ASSERT_TRUE(test::eventually([this] { return changes_ == 1; }));
  // The watch is busy. The system keeps only so many events, and one alone of equal ones in a row.
  const auto touch = [this](const std::string& file) {
    fs::permissions(devices_ + "/snd/" + file, fs::perms::owner_all);
  };
  add("seq");
  add("timer");
  for (int event = 0; event < limit; ++event) touch(event % 2 == 0 ? "seq" : "timer");
  add("pcmC4D0p");
  flooded.set_value();
  EXPECT_TRUE(test::eventually([this] { return changes_ >= 2; }));
}

}  // namespace
}  // namespace tolvane::hal::alsa
