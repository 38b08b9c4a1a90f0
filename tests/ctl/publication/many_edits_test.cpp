// A dozen edits a cycle, as 10,000 a second are at 64 frames: every sample of every cycle belongs to one list
// that was published, whole.
#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/thread_check.h"
#include "core/routing/io_proc.h"
#include "core/routing/routing_context.h"
#include "ctl/publication/publication.h"
#include "support/buffer_list.h"

namespace tolvane::ctl {
namespace {

constexpr std::int64_t kChannels = 16;
constexpr std::size_t kFrames = 8;  // so few that a cycle spends its time reading routes
constexpr int kEditsPerCycle = 12;
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kCycles = 2'000;
#else
constexpr int kCycles = 10'000;  // 120,000 edits: twelve seconds of them
#endif

/// List `number`: 1 to 64 routes, all with the number as gain. The first goes to output 0, the others take
/// turns on the other outputs.
std::size_t lengthOf(int number) {
  return static_cast<std::size_t>(number) % 64 + 1;
}
std::int64_t outputOf(std::size_t route) {
  return route == 0 ? 0 : 1 + static_cast<std::int64_t>(route - 1) % (kChannels - 1);
}
Routes listOf(int number) {
  Routes routes(lengthOf(number));
  for (std::size_t r = 0; r < routes.size(); ++r)
    routes[r] = {static_cast<std::int64_t>(r) % kChannels, outputOf(r), static_cast<float>(number), true};
  return routes;
}

class ManyEdits : public testing::Test {
 protected:
  ManyEdits() {
    for (std::int64_t c = 0; c < kChannels; ++c) {
      input_.add(1, kFrames, 1.0F);
      output_.add(1, kFrames);
    }
    writeConnections(&context_, listOf(0));
  }

  ~ManyEdits() override { becomeMainThread(); }  // the editor had this role

  /// Runs a cycle and returns the number of the list that every sample of it belongs to; -1 if there is none.
  int cycle() {
    {
      const CycleScope scope(cycles_);
      routeUntraced(input_.get(), output_.get(), &context_);
    }
    const int number = static_cast<int>(*samples(0));
    std::vector<float> wanted(kChannels, 0.0F);
    for (std::size_t r = 0; r < lengthOf(number); ++r)
      wanted[static_cast<std::size_t>(outputOf(r))] += static_cast<float>(number);
    for (std::size_t c = 0; c < kChannels; ++c) {
      for (std::size_t f = 0; f < kFrames; ++f) {
        if (samples(c)[f] != wanted[c]) return -1;
      }
    }
    return number;
  }

  const float* samples(std::size_t channel) {
    return static_cast<const float*>(output_.buffer(channel).mData);
  }

  /// Calls `edit` with 1, 2, 3 and so on, on the main thread, until there were enough cycles.
  template <class Edit>
  void editUntilDone(const Edit& edit) {
    becomeMainThread();
    for (int number = 1; !done_; ++number) {
      edit(number);
      edits_.store(number, std::memory_order_release);
    }
  }

  // Neither thread runs ahead by more than this, whatever the machine does. In between they race.
  static constexpr int kMostCyclesAhead = 16;
  void awaitEdits(int cycle) {
    while (edits_.load(std::memory_order_acquire) < cycle * kEditsPerCycle) std::this_thread::yield();
    cycle_.store(cycle, std::memory_order_release);
  }
  void awaitCycle(int edit) {
    while (!done_ && edit > (cycle_.load(std::memory_order_acquire) + kMostCyclesAhead) * kEditsPerCycle)
      std::this_thread::yield();
  }

  test::BufferList input_;
  test::BufferList output_;
  IOProcContext context_ = initialContext(kChannels, kChannels);
  CycleMarks cycles_;
  std::atomic<int> edits_ = 0;
  std::atomic<int> cycle_ = 0;
  std::atomic<bool> done_ = false;
};

TEST_F(ManyEdits, EveryCyclesTableIsOneOfThosePublished) {
  std::vector<int> published = {0};
  std::thread editor([&] {
    Publication publication(cycles_, [&](std::span<const PatchConnection> routes) {
      published.push_back(static_cast<int>(routes.front().gain));
      writeConnections(&context_, routes);
    });
    int last = 0;
    editUntilDone([&](int number) {
      awaitCycle(number);
      publication.edit(listOf(last = number), {});
    });
    publication.poll(Publication::Time{} + Publication::kLongestWait);
    EXPECT_EQ(published.back(), last) << "the newest edit is published in the end";
    EXPECT_EQ(publication.count() + 1, published.size());
  });
  std::vector<int> heard;
  for (int c = 0; c < kCycles; ++c) {
    awaitEdits(c);
    heard.push_back(cycle());
  }
  done_ = true;
  editor.join();
  heard.push_back(cycle());

  EXPECT_GE(edits_, (kCycles - 1) * kEditsPerCycle);
  EXPECT_LE(published.size(), heard.size() + 2) << "more than one publication a cycle";
  EXPECT_GT(published.size(), heard.size() / (2 * kMostCyclesAhead)) << "fewer than there were edits for";
  // Each cycle hears the list that the previous one heard, or one that was published later.
  std::size_t p = 0;
  for (std::size_t c = 0; c < heard.size(); ++c) {
    while (p < published.size() && published[p] != heard[c]) ++p;
    ASSERT_LT(p, published.size()) << "cycle " << c << " heard " << heard[c];
  }
  EXPECT_EQ(heard.back(), published.back());
}

// The comparison sees the mixtures that publishing every edit at once makes.
TEST_F(ManyEdits, WithoutTheWaitACycleHearsAMixture) {
  std::thread editor(
      [&] { editUntilDone([&](int number) { writeConnections(&context_, listOf(number)); }); });
  int cycles = 0;
  while (cycle() >= 0) ++cycles;
  done_ = true;
  editor.join();
  std::printf("the first mixture came after %d cycles and %d edits\n", cycles, edits_.load());
}

}  // namespace
}  // namespace tolvane::ctl
