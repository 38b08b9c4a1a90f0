// One thread publishes while another runs cycles, both as fast as they can. No cycle reads or writes outside
// its buffers. A cycle that no second publication overtakes hears one whole list.
#include <array>
#include <atomic>
#include <random>
#include <span>
#include <thread>

#include "base/thread_check.h"
#include "core/routing/atomic32.h"
#include "routing_fixture.h"

namespace tolvane::test {
namespace {

constexpr std::size_t kChannels = 16;
constexpr int kReads = 10'000'000;
// A cycle reads about 30 entries of three fields each. A sanitizer slows it down tenfold.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kCycles = kReads / 20;
#else
constexpr int kCycles = kReads;
#endif

/// A device of one-channel streams with one frame per cycle, so that a cycle spends most of its time reading
/// routes.
class PublicationUnderLoadTest : public testing::Test {
 protected:
  PublicationUnderLoadTest() {
    becomeMainThread();  // the previous test left this role to its writer
    for (std::size_t c = 0; c < kChannels; ++c) {
      input_.add(1, 1, 1.0F);
      output_.add(1, 1, 0.0F);
    }
  }

  void cycle() { routeCycle(input_.get(), output_.get(), &context_); }
  [[nodiscard]] float output(std::size_t channel) {
    return *static_cast<float*>(output_.buffer(channel).mData);
  }

  BufferList input_;
  BufferList output_;
  IOProcContext context_ = initialContext(kChannels, kChannels);
};

// Halves of two values never make a third, so a torn read shows. A fresh context's values are included.
constexpr std::array<std::int64_t, 10> kChannelLimits = {-2147483648LL, -1,        0, 1, 7, 15, 16, 17,
                                                         1000000,       2147483647};
constexpr std::array<float, 6> kGains = {1.0F, 0.1F, -0.7F, 1e-45F, -3.4e38F, 1.2345678e-20F};

/// Publishes lists of 0 to 64 routes with channels in and out of range, until told to stop.
class WildWriter {
 public:
  WildWriter(IOProcContext& context, std::span<const float> gains)
      : thread_([this, &context, gains] { run(context, gains); }) {}
  ~WildWriter() {
    stop_ = true;
    thread_.join();
  }
  WildWriter(const WildWriter&) = delete;
  WildWriter& operator=(const WildWriter&) = delete;

  [[nodiscard]] int publications() const { return publications_; }

 private:
  void run(IOProcContext& context, std::span<const float> gains) {
    becomeMainThread();
    std::mt19937 random(1);
    const auto channel = [&random] { return kChannelLimits[random() % kChannelLimits.size()]; };
    while (!stop_) {
      std::vector<PatchConnection> routes(random() % 65);
      for (PatchConnection& route : routes)
        route = {channel(), channel(), gains[random() % gains.size()], true};
      writeConnections(&context, routes);
      ++publications_;
    }
  }

  std::atomic<bool> stop_ = false;
  std::atomic<int> publications_ = 0;
  std::thread thread_;
};

TEST_F(PublicationUnderLoadTest, NoCycleLeavesItsBuffers) {
  constexpr float kUnit[] = {1.0F};
  WildWriter writer(context_, kUnit);
  while (writer.publications() < 10) std::this_thread::yield();
  const int before = writer.publications();
  int sounding = 0;
  for (int i = 0; i < kCycles; ++i) {
    cycle();
    // All inputs and gains are 1, so an output counts routes, whatever mixture the cycle saw.
    const float heard = output(0);
    ASSERT_TRUE(heard >= 0.0F && heard <= 64.0F && heard == static_cast<float>(static_cast<int>(heard)))
        << heard;
    sounding += heard > 0.0F ? 1 : 0;
  }
  EXPECT_TRUE(output_.guardsIntact());
  EXPECT_TRUE(input_.guardsIntact());
  EXPECT_EQ(context_.inputChannelCount, 16);
  EXPECT_EQ(context_.outputChannelCount, kChannels);
  EXPECT_GT(sounding, 0);
  EXPECT_GT(writer.publications() - before, 100) << "the two threads did not run side by side";
}

template <class Values, class Value>
bool isOneOf(const Values& values, Value value) {
  for (const auto each : values) {
    if (each == value) return true;
  }
  return false;
}

TEST_F(PublicationUnderLoadTest, EveryFieldReadIsOneThatWasWritten) {
  WildWriter writer(context_, kGains);
  for (std::size_t i = 0; i < kReads / 5; ++i) {
    const std::int32_t live = loadAcquire(context_.activeBuf);
    ASSERT_TRUE(live == 0 || live == 1) << live;
    const std::int32_t count = loadRelaxed(live == 0 ? context_.countA : context_.countB);
    ASSERT_TRUE(count >= 0 && count <= kMaxPatchEntries) << count;
    if (count == 0) continue;
    const auto& entries = live == 0 ? context_.patchesA : context_.patchesB;
    const PatchEntry& entry = entries[i % static_cast<std::size_t>(count)];
    const std::int32_t src = loadRelaxed(entry.src);
    const std::int32_t dst = loadRelaxed(entry.dst);
    const float gain = loadRelaxed(entry.gain);
    ASSERT_TRUE(isOneOf(kChannelLimits, src)) << src;
    ASSERT_TRUE(isOneOf(kChannelLimits, dst)) << dst;
    ASSERT_TRUE(isOneOf(kGains, gain)) << gain;
  }
  EXPECT_GT(writer.publications(), 100) << "the two threads did not run side by side";
}

/// What a cycle heard: the number of the list, and whether every output that the list routes carries this
/// number and every other output is 0.
struct Heard {
  int generation;
  bool whole;
};

class SingleFilePublicationTest : public PublicationUnderLoadTest {
 protected:
  /// List `generation`: 1 to 16 routes, one to each output, all with the generation as gain.
  static std::vector<PatchConnection> listOf(int generation) {
    std::vector<PatchConnection> routes(lengthOf(generation));
    std::int64_t channel = 0;
    for (PatchConnection& route : routes) {
      route = {channel, channel, static_cast<float>(generation), true};
      ++channel;
    }
    return routes;
  }
  static std::size_t lengthOf(int generation) { return static_cast<std::size_t>(generation) % kChannels + 1; }

  Heard heard() {
    const int generation = static_cast<int>(output(0));
    bool whole = true;
    for (std::size_t c = 0; c < kChannels; ++c) {
      const bool routed = c < lengthOf(generation);
      whole &= output(c) == (routed ? static_cast<float>(generation) : 0.0F);
    }
    return {generation, whole};
  }
};

TEST_F(SingleFilePublicationTest, EveryCycleHearsOneListWhole) {
  constexpr int kLists = 20'000;
  writeConnections(&context_, listOf(1));
  std::atomic<int> lastHeard = 0;
  // Publishes a list only after the previous one was heard, so that none overtakes a cycle.
  std::thread writer([&] {
    becomeMainThread();
    for (int generation = 2; generation <= kLists; ++generation) {
      while (lastHeard.load(std::memory_order_acquire) < generation - 1) std::this_thread::yield();
      writeConnections(&context_, listOf(generation));
    }
  });
  int previous = 0;
  // On a busy machine each list may take a time slice, so the number of cycles limits the test as well.
  for (int i = 0; i < kCycles && previous < kLists && !HasFailure(); ++i) {
    cycle();
    const Heard now = heard();
    EXPECT_TRUE(now.whole) << "list " << now.generation;
    EXPECT_TRUE(now.generation == previous || now.generation == previous + 1)
        << previous << " then " << now.generation;
    if (now.generation == previous) std::this_thread::yield();
    previous = now.generation;
    lastHeard.store(previous, std::memory_order_release);
  }
  EXPECT_GT(previous, 100) << "the two threads did not run side by side";
  lastHeard = kLists;  // lets the writer finish
  writer.join();
}

}  // namespace
}  // namespace tolvane::test
