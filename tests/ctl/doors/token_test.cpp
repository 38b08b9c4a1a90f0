#include "ctl/doors/token.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ctl/doors/token_bucket.h"
#include "ctl/support/files.h"

namespace tolvane::ctl {
namespace {

using testing::HasSubstr;

class TokenFile : public testing::Test {
 protected:
  std::string path(const std::string& text, mode_t mode = 0600) {
    test::writeText(folder_ / "token", text);
    ::chmod((folder_ / "token").c_str(), mode);
    return folder_ / "token";
  }
  static void expectRefused(const std::string& path, const std::string& why) {
    const auto token = Token::read(path);
    ASSERT_FALSE(token);
    EXPECT_THAT(token.error().text, HasSubstr(why));
    EXPECT_EQ(token.error().status, ExitStatus::usage);
  }
  test::TemporaryFolder folder_;
};

TEST_F(TokenFile, TheFirstLineIsTheToken) {
  for (const char* text : {"0123456789abcdef", "0123456789abcdef\n", "0123456789abcdef\r\nmore"}) {
    const auto token = Token::read(path(text));
    ASSERT_TRUE(token) << text;
    EXPECT_TRUE(token.value().matches("0123456789abcdef"));
    for (const char* wrong : {"", "0", "0123456789abcde", "0123456789abcdeF", "0123456789abcdef0",
                              "0123456789abcdef0123456789abcdef"})
      EXPECT_FALSE(token.value().matches(wrong)) << wrong;
  }
  EXPECT_TRUE(Token::read(path("0123456789abcdef", 0400)));
}

TEST_F(TokenFile, MustBeItsOwnersAlone) {
  for (const mode_t mode : {0640U, 0604U, 0620U, 0644U, 0777U})
    expectRefused(path("0123456789abcdef", mode), "chmod 600");
}

TEST_F(TokenFile, MustHoldAToken) {
  expectRefused(path(""), "16 to 1024 bytes");
  expectRefused(path("0123456789abcde\nrest"), "16 to 1024 bytes");
  expectRefused(path(std::string(1025, 'x')), "16 to 1024 bytes");
  EXPECT_TRUE(Token::read(path(std::string(1024, 'x') + '\n')));
  expectRefused(folder_ / "missing", "No such file");
  ::mkfifo((folder_ / "pipe").c_str(), 0600);
  expectRefused(folder_ / "pipe", "not a regular file");
}

TEST(TokenBucketTest, AllowsABurstThenTheRate) {
  TokenBucket bucket(10.0, 3.0);
  TokenBucket::Time now{};
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(bucket.take(now));
  EXPECT_FALSE(bucket.take(now));
  now += std::chrono::milliseconds(101);
  EXPECT_TRUE(bucket.take(now));
  EXPECT_FALSE(bucket.take(now));
  now += std::chrono::hours(1);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(bucket.take(now));
  EXPECT_FALSE(bucket.take(now));
}

}  // namespace
}  // namespace tolvane::ctl
