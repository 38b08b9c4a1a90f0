#include "base/inotify.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace tolvane {
namespace {

class InotifyTest : public testing::Test {
 protected:
  using Events = std::vector<std::pair<std::uint32_t, std::string>>;

  InotifyTest() { EXPECT_NE(mkdtemp(folder_.data()), nullptr); }
  ~InotifyTest() override { std::filesystem::remove_all(folder_); }

  void make(const std::string& name) const { std::ofstream(folder_ + "/" + name).put('x'); }

  [[nodiscard]] static Events drain(const Inotify& inotify) {
    Events events;
    inotify.drain([&](const Inotify::Event& event) { events.emplace_back(event.what, event.name); });
    return events;
  }

  std::string folder_ = std::filesystem::temp_directory_path() / "tolvane-XXXXXX";
  Inotify inotify_;
};

TEST_F(InotifyTest, TellsWhatHappenedToWhichEntry) {
  ASSERT_GE(inotify_.add(folder_.c_str(), IN_CREATE | IN_DELETE), 0);
  EXPECT_EQ(drain(inotify_), Events());
  make("one");
  std::filesystem::create_directory(folder_ + "/folder");
  std::filesystem::remove(folder_ + "/one");
  EXPECT_EQ(drain(inotify_),
            (Events{{IN_CREATE, "one"}, {IN_CREATE | IN_ISDIR, "folder"}, {IN_DELETE, "one"}}));
  EXPECT_EQ(drain(inotify_), Events());
}

TEST_F(InotifyTest, TellsOfThingsWithoutAnEntryWithoutAName) {
  ASSERT_GE(inotify_.add(folder_.c_str(), IN_DELETE_SELF), 0);
  std::filesystem::remove(folder_);
  EXPECT_EQ(drain(inotify_), (Events{{IN_DELETE_SELF, ""}, {IN_IGNORED, ""}}));
}

TEST_F(InotifyTest, IsReadableWhileEventsArePending) {
  inotify_.add(folder_.c_str(), IN_CREATE);
  pollfd readable{inotify_.descriptor(), POLLIN, 0};
  EXPECT_EQ(poll(&readable, 1, 0), 0);
  make("one");
  EXPECT_EQ(poll(&readable, 1, 0), 1);
  EXPECT_EQ(drain(inotify_).size(), 1U);
  EXPECT_EQ(poll(&readable, 1, 0), 0);
}

TEST_F(InotifyTest, DrainsMoreThanOneReadHolds) {
  inotify_.add(folder_.c_str(), IN_CREATE);
  Events expected;
  for (int i = 0; i < 1000; ++i) {
    make("entry with a number " + std::to_string(i));
    expected.emplace_back(IN_CREATE, "entry with a number " + std::to_string(i));
  }
  EXPECT_EQ(drain(inotify_), expected);
}

TEST_F(InotifyTest, KeepsTheNumberOfAFolderThatIsWatchedAlready) {
  const int watch = inotify_.add(folder_.c_str(), IN_CREATE);
  EXPECT_EQ(inotify_.add(folder_.c_str(), IN_DELETE), watch);
  make("one");
  std::filesystem::remove(folder_ + "/one");
  EXPECT_EQ(drain(inotify_), (Events{{IN_DELETE, "one"}}));
}

TEST_F(InotifyTest, TellsNothingOfAWatchThatIsRemoved) {
  inotify_.remove(inotify_.add(folder_.c_str(), IN_CREATE));
  make("one");
  EXPECT_EQ(drain(inotify_), (Events{{IN_IGNORED, ""}}));
}

TEST_F(InotifyTest, DoesNotWatchWhatIsNotThere) {
  EXPECT_EQ(inotify_.add((folder_ + "/none").c_str(), IN_CREATE), -1);
}

TEST_F(InotifyTest, SaysThatEventsWereLost) {
  inotify_.add(folder_.c_str(), IN_ATTRIB);
  make("one");
  make("two");
  int queueLength = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> queueLength;
  ASSERT_GT(queueLength, 0);
  // Two files in turn: equal events in a row become one.
  for (int i = 0; i < queueLength; ++i) {
    chmod((folder_ + "/one").c_str(), 0600);
    chmod((folder_ + "/two").c_str(), 0600);
  }
  EXPECT_EQ(drain(inotify_).back(), (std::pair<std::uint32_t, std::string>(IN_Q_OVERFLOW, "")));
}

TEST_F(InotifyTest, WithoutADescriptorWatchesNothing) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const Inotify inotify;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(inotify.descriptor(), -1);
  EXPECT_EQ(inotify.add(folder_.c_str(), IN_CREATE), -1);
  make("one");
  EXPECT_EQ(drain(inotify), Events());
}

}  // namespace
}  // namespace tolvane
