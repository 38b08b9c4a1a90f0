// Whose pages may talk to us.
#include "ctl/http/access.h"

#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

namespace tolvane::ctl::http {
namespace {

TEST(Access, NumbersAndTheMachinesOwnNamesAreOurs) {
  char name[256] = "";
  ASSERT_EQ(::gethostname(name, sizeof name - 1), 0);
  for (const std::string& host :
       {std::string("127.0.0.1"), std::string("127.0.0.1:9001"), std::string("192.0.2.7:80"),
        std::string("[::1]"), std::string("[2001:db8::7]:9001"), std::string("localhost"),
        std::string("LocalHost:9001"), std::string(name), std::string(name) + ".local:9001"})
    EXPECT_TRUE(isOwnHost(host)) << host;
}

TEST(Access, OtherNamesAreNot) {
  for (const char* host : {"", ":9001", "evil.example", "evil.example:9001", "127.0.0.1.evil.example",
                           "localhost.evil.example", "127.0.0.1:", "127.0.0.1:80:80", "127.0.0.1:x", "[::1",
                           "[evil.example]:80", "::1", "127.0.0.1 ", "127.1"})
    EXPECT_FALSE(isOwnHost(host)) << host;
}

TEST(Access, APageMustComeFromTheServerItTalksTo) {
  EXPECT_TRUE(isOwnOrigin("", "127.0.0.1:9001"));
  EXPECT_TRUE(isOwnOrigin("http://127.0.0.1:9001", "127.0.0.1:9001"));
  EXPECT_TRUE(isOwnOrigin("https://Stage.local:9001", "stage.local:9001"));
  for (const char* origin : {"null", "http://127.0.0.1:9002", "http://127.0.0.1", "http://evil.example:9001",
                             "http://127.0.0.1:9001/", "file://", "127.0.0.1:9001", "ftp://127.0.0.1:9001",
                             "http://127.0.0.1:9001.evil.example"})
    EXPECT_FALSE(isOwnOrigin(origin, "127.0.0.1:9001")) << origin;
}

}  // namespace
}  // namespace tolvane::ctl::http
