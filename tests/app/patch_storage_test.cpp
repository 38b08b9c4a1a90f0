// Patch files on the disk: what is no file, what is too large or grows, a full disk, a folder that cannot be
// written, and a process that is killed while it saves.
#include "app/patch_storage.h"

#include <QTemporaryDir>
#include <array>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/patch/patch_file.h"

namespace tolvane::test {
namespace {

using Routes = std::vector<PatchConnection>;

Routes manyRoutes(std::size_t count, std::int64_t firstInput) {
  Routes routes;
  for (std::size_t i = 0; i < count; ++i)
    routes.push_back({firstInput + static_cast<std::int64_t>(i), 0, 1.0F, true});
  return routes;
}

class PatchStorageTest : public testing::Test {
 protected:
  [[nodiscard]] QString path(const char* name) const { return folder_.filePath(QString::fromUtf8(name)); }

  void write(const QString& file, const std::string& text) const {
    std::ofstream(file.toStdString(), std::ios::binary) << text;
  }

  [[nodiscard]] static std::string contents(const QString& file) {
    std::ifstream from(file.toStdString(), std::ios::binary);
    return {std::istreambuf_iterator<char>(from), {}};
  }

  QTemporaryDir folder_;
};

/// A file system of its own: a full disk, or one that is read-only.
class PatchStorageDisk : public PatchStorageTest {
 protected:
  PatchStorageDisk() {
    std::filesystem::create_directory(disk_.toStdString());
    mount(0, "size=64k");
  }
  ~PatchStorageDisk() override { ::umount2(disk_.toUtf8().constData(), MNT_DETACH); }

  void mount(unsigned long flags, const char* options) const {
    ASSERT_EQ(::mount("tmpfs", disk_.toUtf8().constData(), "tmpfs", flags, options), 0);
  }

  /// Leaves no room.
  void fill() const {
    std::ofstream filler((disk_ + "/filler").toStdString(), std::ios::binary);
    while (filler.write("x", 1).flush()) {
    }
  }

  QString disk_ = path("disk");
  QString file_ = disk_ + "/stage.json";
};

TEST_F(PatchStorageTest, WhatIsNoRegularFileIsNotReadAndNotWaitedFor) {
  ASSERT_EQ(::mkfifo(path("fifo").toUtf8().constData(), 0600), 0);
  std::filesystem::create_directory(path("folder").toStdString());
  for (const QString& odd : {path("fifo"), path("folder"), path("missing"), QStringLiteral("/dev/zero"),
                             QStringLiteral("/dev/null"), QStringLiteral("/dev/tty")}) {
    EXPECT_FALSE(readPatchText(odd)) << odd.toStdString();
  }
}

TEST_F(PatchStorageTest, AFileOfTenGigabytesIsNotRead) {
  write(path("huge.json"), "[]");
  std::filesystem::resize_file(path("huge.json").toStdString(), std::uintmax_t{10} << 30U);
  EXPECT_FALSE(readPatchText(path("huge.json")));
}

TEST_F(PatchStorageTest, AFileThatGrowsWhileItIsReadIsReadOrNotButNeverWaitedFor) {
  write(path("growing.json"), "[");
  std::atomic<bool> isEnough = false;
  std::thread writer([&] {
    std::ofstream to(path("growing.json").toStdString(), std::ios::app | std::ios::binary);
    for (int i = 0; i < 40 && !isEnough; ++i) to << std::string(1U << 20U, ' ') << std::flush;
  });
  for (int i = 0; i < 5; ++i) {
    const auto text = readPatchText(path("growing.json"));
    if (text) {
      EXPECT_LE(text->size(), (std::size_t{256} << 20U) + 65536);
    }
  }
  isEnough = true;
  writer.join();
}

TEST_F(PatchStorageTest, WritingToAFifoOrAFolderChangesNothingAndDoesNotWait) {
  ASSERT_EQ(::mkfifo(path("fifo").toUtf8().constData(), 0600), 0);
  std::filesystem::create_directory(path("folder").toStdString());
  writePatchText(path("fifo"), "[]");
  writePatchText(path("folder"), "[]");
  EXPECT_TRUE(std::filesystem::is_fifo(path("fifo").toStdString()));
  EXPECT_TRUE(std::filesystem::is_empty(path("folder").toStdString()));
}

TEST_F(PatchStorageTest, ShorterAndLongerTextsAreWhole) {
  for (const std::size_t count : {3U, 60U, 0U, 1000U, 1U}) {
    const std::string text = encodePatch(manyRoutes(count, 0)).value();
    writePatchText(path("stage.json"), text);
    EXPECT_EQ(contents(path("stage.json")), text);
    EXPECT_EQ(readPatchText(path("stage.json")), text);
  }
}

TEST_F(PatchStorageTest, ItStaysTheSameFileWithItsPermissionsAndLinks) {
  write(path("stage.json"), "old");
  ::chmod(path("stage.json").toUtf8().constData(), 0640);
  std::filesystem::create_hard_link(path("stage.json").toStdString(), path("hard").toStdString());
  std::filesystem::create_symlink("stage.json", path("soft").toStdString());
  writePatchText(path("soft"), "[]");
  EXPECT_EQ(contents(path("hard")), "[]");
  EXPECT_TRUE(std::filesystem::is_symlink(path("soft").toStdString()));
  EXPECT_EQ(std::filesystem::status(path("stage.json").toStdString()).permissions(),
            std::filesystem::perms(0640));
}

TEST_F(PatchStorageTest, ANewFileHasTheUsersMask) {
  for (const mode_t mask : {0022U, 0077U, 0002U}) {
    const mode_t before = ::umask(mask);
    writePatchText(path("new.json"), "[]");
    ::umask(before);
    EXPECT_EQ(std::filesystem::status(path("new.json").toStdString()).permissions(),
              std::filesystem::perms(0666U & ~mask));
    std::filesystem::remove(path("new.json").toStdString());
  }
}

TEST_F(PatchStorageDisk, AFullOneKeepsTheOldText) {
  const std::string old = encodePatch(manyRoutes(10, 0)).value();
  writePatchText(file_, old);
  fill();
  writePatchText(file_, encodePatch(manyRoutes(500, 0)).value());
  EXPECT_EQ(contents(file_), old);
  const std::string shorter = encodePatch(manyRoutes(5, 7)).value();
  writePatchText(file_, shorter);
  EXPECT_EQ(contents(file_), shorter) << "needs no more room";
}

TEST_F(PatchStorageDisk, OneThatCannotBeWrittenKeepsTheOldText) {
  write(file_, "[]");
  mount(MS_REMOUNT | MS_RDONLY, nullptr);
  writePatchText(file_, encodePatch(manyRoutes(3, 0)).value());
  writePatchText(disk_ + "/new.json", "[]");
  EXPECT_EQ(contents(file_), "[]");
  EXPECT_FALSE(std::filesystem::exists((disk_ + "/new.json").toStdString()));
}

// The texts are shorter than a page of memory: the system may cut a longer write between two pages.
TEST_F(PatchStorageTest, AProcessThatIsKilledWhileItSavesLeavesTheOldTextOrTheNew) {
  const std::array<Routes, 3> saved = {manyRoutes(50, 0), manyRoutes(4, 100), manyRoutes(30, 200)};
  writePatchText(path("stage.json"), encodePatch(saved[0]).value());
  std::mt19937 random(1);
  for (int round = 0; round < 500; ++round) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      for (std::size_t i = 1;; ++i) writePatchText(path("stage.json"), encodePatch(saved[i % 3]).value());
    }
    ::usleep(static_cast<useconds_t>(random() % 3000));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    const auto left = decodePatch(contents(path("stage.json")));
    ASSERT_TRUE(left) << "round " << round << ": " << contents(path("stage.json"));
    ASSERT_TRUE(std::find(saved.begin(), saved.end(), left.value()) != saved.end()) << "round " << round;
    ASSERT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path().toStdString()), {}), 1);
  }
}

}  // namespace
}  // namespace tolvane::test
