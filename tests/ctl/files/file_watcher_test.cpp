// Both file watchers: by change notifications and by polling.
#include "ctl/files/file_watcher.h"

#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "ctl/support/files.h"

namespace tolvane::ctl {
namespace {

enum class Way { systemTells, looks };

class Watching : public testing::TestWithParam<Way> {
 protected:
  Watching() { test::writeText(path_, "one"); }

  [[nodiscard]] static std::unique_ptr<FileWatcher> watch(const std::string& path) {
    if (GetParam() == Way::systemTells) return watchFile(path);
    return std::make_unique<PollingWatcher>(path, std::chrono::milliseconds(10));
  }

  /// Asks repeatedly, as the program does, for up to a minute.
  static bool eventuallyChanged(FileWatcher& watcher) {
    for (int i = 0; i < 6000; ++i) {
      if (watcher.changed()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
  }

  test::TemporaryFolder folder_;
  std::string path_ = folder_ / "file";
};

TEST_P(Watching, SaysNothingWhenNothingChanged) {
  const auto watcher = watch(path_);
  EXPECT_FALSE(watcher->changed());
  EXPECT_FALSE(watcher->changed());
}

TEST_P(Watching, NoticesWritingInPlace) {
  const auto watcher = watch(path_);
  test::writeText(path_, "other");
  EXPECT_TRUE(eventuallyChanged(*watcher));
}

TEST_P(Watching, NoticesReplacementTwice) {
  const auto watcher = watch(path_);
  for (const char* text : {"two", "six"}) {  // same length as the old content
    test::writeText(folder_ / "new", text);
    std::filesystem::rename(folder_ / "new", path_);
    EXPECT_TRUE(eventuallyChanged(*watcher));
    while (watcher->changed()) {
    }
  }
}

TEST_P(Watching, NoticesRemovalAndReturn) {
  const auto watcher = watch(path_);
  std::filesystem::remove(path_);
  EXPECT_TRUE(eventuallyChanged(*watcher));
  while (watcher->changed()) {
  }
  test::writeText(path_, "back");
  EXPECT_TRUE(eventuallyChanged(*watcher));
}

TEST_P(Watching, NoticesThatTheFolderWasReplaced) {
  std::filesystem::create_directory(folder_ / "sub");
  test::writeText(folder_ / "sub/file", "one");
  const auto watcher = watch(folder_ / "sub/file");
  std::filesystem::rename(folder_ / "sub", folder_ / "old");
  std::filesystem::create_directory(folder_ / "sub");
  test::writeText(folder_ / "sub/file", "another one");
  EXPECT_TRUE(eventuallyChanged(*watcher));
  while (watcher->changed()) {
  }
  test::writeText(folder_ / "sub/file", "and yet another");
  EXPECT_TRUE(eventuallyChanged(*watcher));
}

TEST_P(Watching, LeavesTheNeighboursAlone) {
  const auto watcher = watch(path_);
  test::writeText(folder_ / "neighbour", "text");
  EXPECT_FALSE(watcher->changed());
}

INSTANTIATE_TEST_SUITE_P(BothWays, Watching, testing::Values(Way::systemTells, Way::looks));

}  // namespace
}  // namespace tolvane::ctl
