// Where the file of aggregates is, and when it is read.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/aggregates/aggregate_file.h"

namespace tolvane::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

/// Gives an environment variable another value for the lifetime of the object.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
  }
  ~ScopedVariable() { before_ ? ::setenv(name_, before_->c_str(), 1) : ::unsetenv(name_); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  const char* name_;
  std::optional<std::string> before_;
};

TEST(AggregateFilePath, IsInTheUsersConfiguration) {
  const ScopedVariable home("HOME", "/home/me");
  {
    const ScopedVariable config("XDG_CONFIG_HOME", "/etc/mine");
    EXPECT_EQ(hal::aggregateFilePath(), "/etc/mine/tolvane/aggregates.json");
  }
  for (const char* const unusable : {static_cast<const char*>(nullptr), "", "relative/folder"}) {
    const ScopedVariable config("XDG_CONFIG_HOME", unusable);
    EXPECT_EQ(hal::aggregateFilePath(), "/home/me/.config/tolvane/aggregates.json");
  }
  const ScopedVariable noConfig("XDG_CONFIG_HOME", nullptr);
  const ScopedVariable noHome("HOME", nullptr);
  EXPECT_EQ(hal::aggregateFilePath(), "");
}

class AggregateFileTest : public testing::Test {
 protected:
  AggregateFileTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tolvane-aggregates-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
    path_ = (folder_ / "aggregates.json").string();
  }
  ~AggregateFileTest() override { std::filesystem::remove_all(folder_); }

  static std::string textOf(const std::string& name) {
    return hal::AggregateDocument().textWith({name, {{"pipewire:x", "X", 1, 1}}});
  }

  std::filesystem::path folder_;
  std::string path_;
};

TEST_F(AggregateFileTest, OneThatIsNotThereHasNoAggregates) {
  const hal::AggregateRead read = hal::readAggregateFile(path_);
  ASSERT_TRUE(read.document.has_value());
  EXPECT_THAT(read.document->aggregates(), IsEmpty());
  EXPECT_TRUE(hal::readAggregateFile(path_ + "/below/a/file").document.has_value());
}

TEST_F(AggregateFileTest, ErrorsNameTheFile) {
  std::ofstream(path_) << "{\n";
  EXPECT_THAT(hal::readAggregateFile(path_).error, StartsWith(path_ + ": line 2, column 1: syntax error"));
  EXPECT_EQ(hal::readAggregateFile(folder_.string()).error, folder_.string() + ": Is a directory");
}

TEST_F(AggregateFileTest, OneThatIsTooLargeForItsPurposeIsNotRead) {
  std::ofstream(path_) << std::string((std::size_t{1} << 20) + 1, ' ');
  EXPECT_EQ(hal::readAggregateFile(path_).error, path_ + ": File too large");
}

TEST_F(AggregateFileTest, IsReadAgainWhenItIsAnother) {
  hal::AggregateFile file(path_);
  EXPECT_THAT(file.aggregates(), IsEmpty());
  std::ofstream(path_) << textOf("First");
  ASSERT_THAT(file.aggregates(), SizeIs(1));
  EXPECT_EQ(file.aggregates()[0].name, "First");
  std::ofstream(path_ + ".new") << textOf("Other");  // of the same size
  std::filesystem::rename(path_ + ".new", path_);
  ASSERT_THAT(file.aggregates(), SizeIs(1));
  EXPECT_EQ(file.aggregates()[0].name, "Other");
  std::ofstream(path_) << "nonsense";
  EXPECT_THAT(file.aggregates(), IsEmpty());
  std::filesystem::remove(path_);
  EXPECT_THAT(file.aggregates(), IsEmpty());
}

}  // namespace
}  // namespace tolvane::test
