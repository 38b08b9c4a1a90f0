// Which cards sound servers use, read from a process file system that the test makes.
#include "hal/alsa/card_holders.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

namespace tolvane::hal::alsa {
namespace {

namespace fs = std::filesystem;

class CardHolders : public testing::Test {
 protected:
  CardHolders() {
    std::string name = (fs::temp_directory_path() / "tolvane-proc-XXXXXX").string();
    proc_ = mkdtemp(name.data());
  }
  ~CardHolders() override { fs::remove_all(proc_); }

  void write(const fs::path& file, const std::string& text) const {
    fs::create_directories((proc_ / file).parent_path());
    std::ofstream(proc_ / file) << text;
  }
  void process(int id, const std::string& name, const std::string& openFile) const {
    const fs::path folder = std::to_string(id);
    write(folder / "comm", name + "\n");
    fs::create_directories(proc_ / folder / "fd");
    fs::create_symlink("/dev/null", proc_ / folder / "fd" / "0");
    fs::create_symlink(openFile, proc_ / folder / "fd" / "17");
  }

  fs::path proc_;
};

TEST_F(CardHolders, NoneWithoutServers) {
  process(100, "aplay", "/dev/snd/pcmC0D0p");
  EXPECT_EQ(cardsOfSoundServers(proc_), std::set<int>{});
}

TEST_F(CardHolders, AServerHasWhatItHasOpen) {
  process(100, "wireplumber", "/dev/snd/controlC1");
  process(101, "jackd", "/dev/snd/pcmC12D0c");
  process(102, "pipewire", "/dev/snd/seq");
  process(103, "tolvanectl", "/dev/snd/pcmC3D0p");
  EXPECT_EQ(cardsOfSoundServers(proc_), (std::set<int>{1, 12}));
}

TEST_F(CardHolders, AnotherUsersServerIsKnownByTheThreadThatTheKernelNames) {
  write("asound/card2/pcm0p/sub0/status", "state: RUNNING\nowner_pid   : 205\ntrigger_time: 1.2\n");
  write("205/status", "Name:\tdata-loop.0\nTgid:\t200\nPid:\t205\n");
  write("200/comm", "pipewire\n");
  EXPECT_EQ(cardsOfSoundServers(proc_), std::set<int>{2});
}

TEST_F(CardHolders, AnotherProgramThatStreamsIsNoServer) {
  write("asound/card2/pcm0p/sub0/status", "state: RUNNING\nowner_pid   : 205\n");
  write("205/status", "Name:\taplay\nTgid:\t205\n");
  write("205/comm", "aplay\n");
  write("asound/card3/pcm0p/sub0/status", "closed\n");
  EXPECT_EQ(cardsOfSoundServers(proc_), std::set<int>{});
}

TEST_F(CardHolders, WithoutAnyCards) {
  EXPECT_EQ(cardsOfSoundServers(proc_ / "missing"), std::set<int>{});
}

TEST_F(CardHolders, TheUseOfAPcm) {
  write("asound/card4/pcm1c/sub0/hw_params", "closed\n");
  write("asound/card4/pcm1c/sub1/hw_params",
        "access: RW_INTERLEAVED\nformat: S16_LE\nsubformat: STD\nchannels: 6\nrate: 44100 (44100/1)\n"
        "period_size: 441\nbuffer_size: 1764\n");
  EXPECT_EQ(pcmInUse(4, "pcm1c", proc_), (PcmInUse{6, 44100, 441}));
  EXPECT_EQ(pcmInUse(4, "pcm0p", proc_), std::nullopt);
}

TEST(PcmInUseText, OfOtherTexts) {
  EXPECT_EQ(parsePcmInUse("closed\n"), std::nullopt);
  EXPECT_EQ(parsePcmInUse("no setup\n"), std::nullopt);
  EXPECT_EQ(parsePcmInUse(""), std::nullopt);
  EXPECT_EQ(parsePcmInUse("channels: two\nrate: 48000\nperiod_size: 64\n"), std::nullopt);
}

TEST(CardOfDeviceFile, OfEveryKindOfPath) {
  EXPECT_EQ(cardOfDeviceFile("/dev/snd/pcmC0D0p"), 0);
  EXPECT_EQ(cardOfDeviceFile("/dev/snd/pcmC31D2c"), 31);
  EXPECT_EQ(cardOfDeviceFile("/dev/snd/controlC7"), 7);
  EXPECT_EQ(cardOfDeviceFile("/dev/snd/timer"), std::nullopt);
  EXPECT_EQ(cardOfDeviceFile("/dev/snd/controlC"), std::nullopt);
  EXPECT_EQ(cardOfDeviceFile("/dev/snd/controlC-1"), std::nullopt);
  EXPECT_EQ(cardOfDeviceFile("/tmp/dev/snd/controlC7"), std::nullopt);
  EXPECT_EQ(cardOfDeviceFile(""), std::nullopt);
}

}  // namespace
}  // namespace tolvane::hal::alsa
