// tolvanectl devices: the list as a table and as JSON.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ctl/support/child_process.h"

namespace tolvane::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Devices, TableHasTheVirtualDeviceLast) {
  const Finished run = runProgram({"devices"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  const std::string title = run.out.substr(0, run.out.find('\n'));
  for (const char* column : {"id", "name", "inputs", "outputs", "driver", "sample rate", "buffer frames"}) {
    EXPECT_THAT(title, HasSubstr(column));
  }
  const std::string last = run.out.substr(run.out.rfind('\n', run.out.size() - 2) + 1);
  EXPECT_THAT(last, testing::ContainsRegex("Tolvane Virtual Device +18 +20 +virtual +48000 +512\n$"));
}

TEST(Devices, JsonHasEveryMemberWithItsType) {
  const Finished run = runProgram({"devices", "--json"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  const json devices = json::parse(run.out);
  ASSERT_TRUE(devices.is_array());
  ASSERT_FALSE(devices.empty());
  const json& last = devices.back();
  EXPECT_TRUE(last.at("id").is_number_unsigned());
  EXPECT_GT(last.at("id").get<int>(), 1);
  EXPECT_EQ(last.at("name"), "Tolvane Virtual Device");
  EXPECT_EQ(last.at("inputChannels"), 18);
  EXPECT_EQ(last.at("outputChannels"), 20);
  EXPECT_EQ(last.at("driver"), "virtual");
  EXPECT_EQ(last.at("sampleRate"), 48000.0);
  EXPECT_EQ(last.at("bufferFrames"), 512);
  EXPECT_EQ(last.at("uid"), "virtual:tolvane");
  EXPECT_EQ(last.at("cardUid"), nullptr);
  EXPECT_EQ(last.size(), 9U);
}

TEST(Devices, LongTableHasTheLastingIdentities) {
  const Finished run = runProgram({"devices", "--long"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, testing::ContainsRegex("buffer frames  uid\n"));
  EXPECT_THAT(run.out, testing::EndsWith(" 48000            512  virtual:tolvane\n"));
}

TEST(Devices, ChannelsOfADeviceWithoutNamesAreNumbers) {
  for (const char* device : {"Tolvane Virtual Device", "virtual:tolvane", "tolvane virt"}) {
    const Finished run = runProgram({"devices", "--channels", device});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, StartsWith("device                  channel  name  node  port\n"
                                    "Tolvane Virtual Device  in 1     -     -     -\n"));
    EXPECT_THAT(run.out, HasSubstr("Tolvane Virtual Device  out 20   -     -     -\n"));
  }
  const json all = json::parse(runProgram({"devices", "--channels", "--json"}).out);
  EXPECT_EQ(all.back().at("inputs").size(), 18U);
  EXPECT_EQ(all.back().at("outputs").size(), 20U);
  EXPECT_EQ(all.back().at("outputs").at(19).at("channel"), 19);
  EXPECT_EQ(all.back().at("outputs").at(19).at("name"), nullptr);
}

TEST(Devices, ChannelsOfNoDeviceAreAnError) {
  const Finished run = runProgram({"devices", "--channels", "Piano", "--wait", "0"});
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("no device is called \"Piano\""));
}

TEST(Devices, JsonIsTheSameInEveryLocale) {
  for (const char* locale : {"C", "C.UTF-8", "de_DE.UTF-8"}) {
    ChildProcess::Options options;
    options.environment = {{"LC_ALL", locale}, {"LANG", locale}};
    const json devices = json::parse(runProgram({"devices", "--json"}, options).out);
    EXPECT_EQ(devices.back().at("sampleRate"), 48000.0) << locale;
  }
}

}  // namespace
}  // namespace tolvane::test
