#include "ctl/doors/listen_address.h"

#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

TEST(ListenAddress, IsAPortWithOrWithoutAnAddress) {
  for (const auto& [text, meant] :
       {std::pair("9000", "127.0.0.1:9000"), std::pair("0", "127.0.0.1:0"),
        std::pair("localhost:1", "127.0.0.1:1"), std::pair("0.0.0.0:9000", "0.0.0.0:9000"),
        std::pair("192.0.2.7:65535", "192.0.2.7:65535"), std::pair("[::1]:9000", "[::1]:9000"),
        std::pair("[::]:9000", "[::]:9000")}) {
    const auto address = parseListenAddress(text);
    ASSERT_TRUE(address) << text;
    EXPECT_EQ(address.value().text(), meant);
  }
}

TEST(ListenAddress, IsNothingElse) {
  for (const char* text :
       {"", ":", "x", "-1", "65536", "9000 ", " 9000", "0x10", "127.0.0.1", "127.0.0.1:", ":9000",
        "host.example:9000", "::1:9000", "[::1]", "[]:9000", "[127.0.0.1]:9000", "1.2.3:9000"}) {
    const auto address = parseListenAddress(text);
    ASSERT_FALSE(address) << text;
    EXPECT_EQ(address.error().status, ExitStatus::usage);
  }
}

TEST(ListenAddress, KnowsTheLoopback) {
  for (const char* text : {"1", "127.0.0.1:1", "127.9.9.9:1", "[::1]:1"})
    EXPECT_TRUE(parseListenAddress(text).value().isLoopback()) << text;
  for (const char* text :
       {"0.0.0.0:1", "128.0.0.1:1", "192.168.0.1:1", "[::]:1", "[fe80::1]:1", "[::ffff:127.0.0.1]:1"})
    EXPECT_FALSE(parseListenAddress(text).value().isLoopback()) << text;
}

}  // namespace
}  // namespace tolvane::ctl
