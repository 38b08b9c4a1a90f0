// Buffers whose memory is not what the server states.
#include "hal/pipewire/shared_buffer.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tolvane::test {
namespace {

using hal::pipewire::checkBuffer;
using hal::pipewire::sampleBytes;

/// A buffer in memory of two pages, with a file of one page behind it.
class PipeWireSharedBuffer : public testing::Test {
 protected:
  PipeWireSharedBuffer() {
    EXPECT_EQ(::ftruncate(file_, page_), 0);
    memory_ = static_cast<char*>(::mmap(nullptr, pages(2), PROT_READ | PROT_WRITE, MAP_SHARED, file_, 0));
    data_.data = memory_;
    data_.maxsize = static_cast<std::uint32_t>(page_);
    data_.chunk = &chunk_;
    block_.datas = &data_;
    block_.n_datas = 1;
    buffer_.buffer = &block_;
  }
  ~PipeWireSharedBuffer() override {
    ::munmap(memory_, pages(2));
    ::close(file_);
  }

  [[nodiscard]] std::size_t pages(std::size_t count) const { return count * static_cast<std::size_t>(page_); }

  std::size_t checked(bool isForWriting) {
    checkBuffer(buffer_, isForWriting);
    return sampleBytes(buffer_);
  }

  void expectUnusable() {
    EXPECT_EQ(checked(false), 0U);
    EXPECT_EQ(checked(true), 0U);
  }

  long page_ = ::sysconf(_SC_PAGESIZE);
  int file_ = ::memfd_create("shared", MFD_CLOEXEC);
  char* memory_ = nullptr;
  spa_chunk chunk_{};
  spa_data data_{};
  spa_buffer block_{};
  pw_buffer buffer_{};
};

TEST_F(PipeWireSharedBuffer, HasTheBytesThatItStates) {
  EXPECT_EQ(checked(false), pages(1));
  EXPECT_EQ(checked(true), pages(1));
}

TEST_F(PipeWireSharedBuffer, IsNotUsedIfItsFileIsShorterThanItStates) {
  data_.maxsize = static_cast<std::uint32_t>(pages(2));
  expectUnusable();
}

TEST_F(PipeWireSharedBuffer, IsNotUsedIfNothingIsThere) {
  for (char* const nothing : {memory_ + page_, reinterpret_cast<char*>(0x10),
                              reinterpret_cast<char*>(~std::uintptr_t{15}), static_cast<char*>(nullptr)}) {
    data_.data = nothing;
    expectUnusable();
  }
}

TEST_F(PipeWireSharedBuffer, IsNotUsedIfItsDescriptionIsNotThere) {
  data_.chunk = reinterpret_cast<spa_chunk*>(memory_ + page_);
  expectUnusable();
  data_.chunk = nullptr;
  expectUnusable();
}

TEST_F(PipeWireSharedBuffer, IsNotUsedWithoutAnyBlock) {
  block_.n_datas = 0;
  expectUnusable();
}

TEST_F(PipeWireSharedBuffer, IsReadButNotWrittenIfItIsReadOnly) {
  ASSERT_EQ(::mprotect(memory_, pages(2), PROT_READ), 0);
  EXPECT_EQ(checked(false), pages(1));
  EXPECT_EQ(checked(true), 0U);
}

}  // namespace
}  // namespace tolvane::test
