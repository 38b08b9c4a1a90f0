// Atomic files, on file systems with and without unnamed files.
#include "ctl/files/atomic_file.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "ctl/support/files.h"

namespace tolvane::ctl {
namespace {

using test::readBytes;
using test::TemporaryFolder;
using test::writeText;
using testing::ElementsAre;
using testing::IsEmpty;

/// From now on, unnamed files fail in this process as on a file system without them.
void refuseUnnamedFiles() {
  sock_filter program[] = {
      {BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
      {BPF_JMP | BPF_JEQ | BPF_K, 0, 3, SYS_openat},
      {BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, args[2])},
      {BPF_JMP | BPF_JSET | BPF_K, 0, 1, O_TMPFILE & ~O_DIRECTORY},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | EOPNOTSUPP},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
  };
  const sock_fprog filter{std::size(program), program};
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
    std::abort();
}

AtomicFile begun(const std::string& path, const std::string& text) {
  auto pending = AtomicFile::create(path);
  if (!pending || ::write(pending.value().descriptor(), text.data(), text.size()) < 0) std::abort();
  return std::move(pending).value();
}

class AtomicFileTest : public testing::Test {
 protected:
  /// Runs `body` in its own process, without unnamed files.
  template <class Body>
  static void withNamedFiles(Body body) {
    EXPECT_EXIT(
        {
          refuseUnnamedFiles();
          body();
          std::exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
  }
  TemporaryFolder folder_;
};

TEST_F(AtomicFileTest, HasNoNameUntilItIsWhole) {
  AtomicFile file = begun(folder_ / "new", "text");
  EXPECT_THAT(folder_.names(), IsEmpty());
  EXPECT_FALSE(file.commit());
  EXPECT_THAT(folder_.names(), ElementsAre("new"));
  EXPECT_EQ(readBytes(folder_ / "new"), "text");
}

TEST_F(AtomicFileTest, TakesThePlaceOfTheOldOneAndLeavesNothingElse) {
  writeText(folder_ / "old", "before");
  AtomicFile file = begun(folder_ / "old", "after");
  EXPECT_EQ(readBytes(folder_ / "old"), "before");
  EXPECT_FALSE(file.commit());
  EXPECT_THAT(folder_.names(), ElementsAre("old"));
  EXPECT_EQ(readBytes(folder_ / "old"), "after");
}

TEST_F(AtomicFileTest, TakesThePlaceOfOneThatCameMeanwhile) {
  AtomicFile file = begun(folder_ / "name", "ours");
  writeText(folder_ / "name", "theirs");
  EXPECT_FALSE(file.commit());
  EXPECT_THAT(folder_.names(), ElementsAre("name"));
  EXPECT_EQ(readBytes(folder_ / "name"), "ours");
}

TEST_F(AtomicFileTest, LeavesNothingWhenItCannotTakeItsPlace) {
  {
    AtomicFile file = begun(folder_ / "name", "ours");
    ASSERT_EQ(::mkdir((folder_ / "name").c_str(), 0700), 0);
    const auto failure = file.commit();
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->text, (folder_ / "name") + ": Is a directory");
  }
  EXPECT_THAT(folder_.names(), ElementsAre("name"));
}

TEST_F(AtomicFileTest, LeavesNothingWhenItIsGivenUp) {
  static_cast<void>(begun(folder_ / "name", "ours"));
  EXPECT_THAT(folder_.names(), IsEmpty());
}

TEST_F(AtomicFileTest, WithAHiddenNameTakesAPlaceAndLeavesNothingElse) {
  withNamedFiles([this] {
    writeText(folder_ / "old", "before");
    AtomicFile file = begun(folder_ / "old", "after");
    EXPECT_EQ(folder_.names().size(), 2U);
    EXPECT_EQ(folder_.names()[0].substr(0, 12), ".tolvanectl-");
    EXPECT_EQ(readBytes(folder_ / "old"), "before");
    EXPECT_FALSE(file.commit());
    EXPECT_THAT(folder_.names(), ElementsAre("old"));
    EXPECT_EQ(readBytes(folder_ / "old"), "after");
  });
}

TEST_F(AtomicFileTest, WithAHiddenNameIsGoneWhenItIsGivenUp) {
  withNamedFiles([this] {
    static_cast<void>(begun(folder_ / "name", "ours"));
    EXPECT_THAT(folder_.names(), IsEmpty());
  });
}

TEST_F(AtomicFileTest, WithHiddenNamesTwoAreNotInEachOthersWay) {
  withNamedFiles([this] {
    AtomicFile one = begun(folder_ / "name", "one");
    AtomicFile other = begun(folder_ / "name", "other");
    EXPECT_FALSE(one.commit());
    EXPECT_FALSE(other.commit());
    EXPECT_EQ(readBytes(folder_ / "name"), "other");
    EXPECT_THAT(folder_.names(), ElementsAre("name"));
  });
}

}  // namespace
}  // namespace tolvane::ctl
