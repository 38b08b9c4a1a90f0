#pragma once

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/routing/io_proc.h"
#include "core/routing/routing_context.h"
#include "support/buffer_list.h"

namespace tolvane::test {

/// A context of 8 inputs and 8 outputs, and a device whose buffers the test adds. Output samples start as
/// kStale, which shows samples that nobody cleared.
class RoutingTest : public testing::Test {
 protected:
  static constexpr float kStale = 77.0F;

  void publish(const std::vector<PatchConnection>& routes) { writeConnections(&context_, routes); }
  void route(std::int64_t input, std::int64_t output, float gain = 1.0F) {
    routes_.push_back({input, output, gain, true});
  }
  /// Publishes the routes from `route`, and runs one cycle.
  void cycle() {
    publish(routes_);
    routeCycle(input_.get(), output_.get(), &context_);
    EXPECT_TRUE(output_.guardsIntact());
  }

  BufferList input_;
  BufferList output_;
  IOProcContext context_ = initialContext(8, 8);
  std::vector<PatchConnection> routes_;
};

}  // namespace tolvane::test
