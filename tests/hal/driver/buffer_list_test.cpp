#include "hal/driver/buffer_list.h"

#include <utility>

#include <gtest/gtest.h>

namespace tolvane::hal {
namespace {

TEST(BufferList, HasAsManyBuffersAsAskedForAllEmpty) {
  BufferList buffers(3);
  const AudioBufferList& list = buffers.list();
  ASSERT_EQ(list.mNumberBuffers, 3U);
  for (UInt32 b = 0; b < 3; ++b) {
    EXPECT_EQ(list.mBuffers[b].mNumberChannels, 0U);
    EXPECT_EQ(list.mBuffers[b].mDataByteSize, 0U);
    EXPECT_EQ(list.mBuffers[b].mData, nullptr);
  }
}

TEST(BufferList, OfNoBuffers) {
  BufferList buffers(0);
  EXPECT_EQ(buffers.list().mNumberBuffers, 0U);
}

TEST(BufferList, SetsOneBufferAndLeavesTheOthers) {
  BufferList buffers(3);
  float samples[6 * 100] = {};
  buffers.set(1, 6, 100, samples);
  EXPECT_EQ(buffers.list().mBuffers[0].mNumberChannels, 0U);
  EXPECT_EQ(buffers.list().mBuffers[1].mNumberChannels, 6U);
  EXPECT_EQ(buffers.list().mBuffers[1].mDataByteSize, sizeof samples);
  EXPECT_EQ(buffers.list().mBuffers[1].mData, samples);
  EXPECT_EQ(buffers.list().mBuffers[2].mNumberChannels, 0U);
}

TEST(BufferList, KeepsItsMemoryWhenItIsMoved) {
  BufferList buffers(2);
  const AudioBufferList* const list = &buffers.list();
  BufferList moved = std::move(buffers);
  EXPECT_EQ(&moved.list(), list);
}

TEST(BufferList, IsAsLargeAsItsBuffers) {
  EXPECT_EQ(BufferList::bytes(0), 8U);
  EXPECT_EQ(BufferList::bytes(1), sizeof(AudioBufferList));
  EXPECT_EQ(BufferList::bytes(1024), 8U + 1024U * 16U);
}

}  // namespace
}  // namespace tolvane::hal
