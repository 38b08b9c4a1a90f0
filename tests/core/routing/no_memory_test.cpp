// A cycle without memory for its tables is silent, and the next one with memory sounds again.
#include <cstdlib>
#include <new>

#include "routing_fixture.h"

namespace {

/// Which of the next table allocations of this thread fail: bit 0 is the next one.
thread_local unsigned failing = 0;

}  // namespace

// The allocation that the tables use, and what frees it.
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  const bool fails = (failing & 1U) != 0;
  failing >>= 1U;
  return fails ? nullptr : std::malloc(size);  // NOLINT(cppcoreguidelines-no-malloc)
}
void* operator new[](std::size_t size) {
  if (void* const memory = std::malloc(size)) return memory;  // NOLINT(cppcoreguidelines-no-malloc)
  throw std::bad_alloc();
}
void operator delete[](void* memory) noexcept {
  std::free(memory);  // NOLINT(cppcoreguidelines-no-malloc)
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);  // NOLINT(cppcoreguidelines-no-malloc)
}

namespace tolvane::test {
namespace {

class NoMemoryTest : public RoutingTest, public testing::WithParamInterface<unsigned> {
 protected:
  NoMemoryTest() {
    input_.add(2, 64, 0.5F);
    output_.add(1, 64, kStale).add(2, 64, kStale);
    route(0, 0);
    route(1, 2);
  }
};

TEST_P(NoMemoryTest, ACycleIsSilentAndTheNextSounds) {
  for (int round = 0; round < 3; ++round) {
    failing = GetParam();
    cycle();
    failing = 0;
    EXPECT_EQ(output_.copyOf(0), std::vector<float>(64, 0.0F));
    EXPECT_EQ(output_.copyOf(1), std::vector<float>(128, 0.0F));
    cycle();
    EXPECT_EQ(output_.copyOf(0), std::vector<float>(64, 0.5F));
    EXPECT_EQ(output_.channel(1, 1), std::vector<float>(64, 0.5F));
  }
}

INSTANTIATE_TEST_SUITE_P(FirstSecondAndBothTables, NoMemoryTest, testing::Values(0b01U, 0b10U, 0b11U));

}  // namespace
}  // namespace tolvane::test
