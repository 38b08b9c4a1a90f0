#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hal/jack/jack_driver.h"
#include "support/eventually.h"
#include "support/jack_server.h"
#include "support/jack_session_client.h"
#include "support/jack_test_client.h"

namespace tolvane::test {

using namespace std::chrono_literals;

/// True if the action ends within the driver's limit, plus one second in which the machine may stand still.
template <class Action>
bool endsWithin(std::chrono::milliseconds limit, const Action& action) {
  const auto before = std::chrono::steady_clock::now();
  action();
  return std::chrono::steady_clock::now() - before < limit + 1s;
}

/// A driver, and a private server that a test starts if it needs one.
class JackFixture : public ::testing::Test {
 protected:
  JackFixture() { JackServer::choosePrivateName(); }

  void startServer(std::uint32_t bufferFrames = 256) { server_.emplace(bufferFrames); }

  /// The list of a running server. Waits for it: if a busy server answers late, the list is empty.
  std::vector<hal::DeviceInfo> devices() {
    std::vector<hal::DeviceInfo> list;
    EXPECT_TRUE(eventually([&] {
      list = driver_->devices();
      return !list.empty();
    }));
    return list;
  }

  /// The listed device of this client. Waits for it.
  hal::DeviceInfo device(const std::string& client) {
    hal::DeviceInfo found;
    const bool listed = eventually([&] {
      const auto devices = driver_->devices();
      const auto at = std::find_if(devices.begin(), devices.end(),
                                   [&](const auto& info) { return info.uid == "jack:" + client; });
      if (at != devices.end()) found = *at;
      return at != devices.end();
    });
    EXPECT_TRUE(listed) << client;
    return found;
  }

  /// Starts the device of this client with `session` as the HAL's side.
  std::unique_ptr<hal::Session> start(const std::string& client, hal::SessionClient& session) {
    hal::StartResult result = driver_->start(device(client), session);
    EXPECT_EQ(result.status, noErr);
    return std::move(result.session);
  }

  std::optional<JackServer> server_;
  // Long limits, so that a server that is merely slow, as on a busy machine, does not count as hung.
  std::unique_ptr<hal::Driver> driver_ =
      hal::makeJackDriver({.signOfLife = 30s, .start = 30s, .setting = 30s});
};

/// Routes from every input to the output of the same number.
inline std::vector<PatchConnection> straightRoutes(std::int64_t count) {
  std::vector<PatchConnection> routes;
  for (std::int64_t n = 0; n < count; ++n) routes.push_back({n, n, 1.0F, true});
  return routes;
}

}  // namespace tolvane::test
