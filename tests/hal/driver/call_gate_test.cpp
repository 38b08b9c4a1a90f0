// Who passes a gate, and what the thread that shuts it waits for.
#include "hal/driver/call_gate.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "support/eventually.h"

namespace tolvane::test {

namespace {

using namespace std::chrono_literals;
using hal::CallGate;

class Gate : public testing::Test {
 protected:
  bool admits() { return static_cast<bool>(CallGate::Pass(gate_)); }

  CallGate gate_;
};

TEST_F(Gate, admitsFromItsOpeningToItsShutting) {
  EXPECT_FALSE(admits());
  gate_.open();
  EXPECT_TRUE(admits());
  gate_.shut();
  EXPECT_FALSE(admits());
  gate_.open();
  EXPECT_FALSE(admits());
}

TEST_F(Gate, isShutWhileACallerIsInside) {
  gate_.open();
  std::optional<CallGate::Pass> inside(std::in_place, gate_);
  gate_.beginShut();
  EXPECT_FALSE(admits());
  EXPECT_FALSE(gate_.isEmpty());
  EXPECT_FALSE(gate_.waitEmpty(std::chrono::steady_clock::now() + 2ms));
  inside.reset();
  EXPECT_TRUE(gate_.isEmpty());
  EXPECT_TRUE(gate_.waitEmpty());
}

TEST_F(Gate, isShutOnceTheLastCallerHasLeft) {
  gate_.open();
  std::optional<CallGate::Pass> inside(std::in_place, gate_);
  std::atomic<bool> left{false};
  std::thread shutting([&] {
    gate_.shut();
    EXPECT_TRUE(left.load());
  });
  EXPECT_TRUE(eventually([this] { return !admits(); }));
  left = true;
  inside.reset();
  shutting.join();
}

}  // namespace

}  // namespace tolvane::test
