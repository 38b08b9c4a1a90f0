// What a session reports of the server's clock.
#include "hal/pipewire/cycle_runner.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <iterator>
#include <vector>

#include <gtest/gtest.h>

#include "hal/pipewire/shared_buffer.h"

namespace tolvane::test {
namespace {

using hal::pipewire::CycleRunner;
using hal::pipewire::Library;

class ClockClient final : public hal::SessionClient {
 public:
  void cycle(const hal::IoCycle& /*cycle*/) noexcept override { ++cycles; }
  void overload() noexcept override { ++overloads; }
  void aliveChanged(bool /*alive*/) noexcept override {}
  void formatChanged(double sampleRateHz, std::uint32_t /*frames*/) noexcept override {
    rateHz = sampleRateHz;
  }

  int cycles = 0;
  int overloads = 0;
  double rateHz = 0.0;
};

/// A device without channels that runs consecutive cycles of 256 frames.
class PipeWireCycleRunner : public testing::Test {
 protected:
  void SetUp() override {
    runner_.setRunning(true);
    position_.clock.id = 7;
    position_.clock.rate = {1, 48000};
    position_.clock.duration = 256;
  }

  /// Sets the total of the hardware's xruns. Servers from 1.0 on keep it at the clock's end.
  void setXrunFrames(std::uint64_t frames) {
    auto* const end = reinterpret_cast<std::byte*>(&position_.clock + 1);
    std::memcpy(end - sizeof frames, &frames, sizeof frames);
  }

  void runCycle() {
    runner_.process(&position_);
    position_.clock.position += 256;
  }

  Library library_{};
  ClockClient client_;
  CycleRunner runner_{library_, client_, {}, {}};
  spa_io_position position_{};
};

TEST_F(PipeWireCycleRunner, OneCycleAfterTheOtherIsNoOverload) {
  for (int cycle = 0; cycle < 5; ++cycle) runCycle();
  EXPECT_EQ(client_.cycles, 5);
  EXPECT_EQ(client_.overloads, 0);
}

TEST_F(PipeWireCycleRunner, AClockThatHasGoneOnWithoutUsIsAnOverload) {
  runCycle();
  position_.clock.position += 512;
  runCycle();
  runCycle();
  EXPECT_EQ(client_.overloads, 1);
}

TEST_F(PipeWireCycleRunner, AnXrunOfTheHardwareIsAnOverload) {
  setXrunFrames(1000);  // from before the session
  runCycle();
  runCycle();
  EXPECT_EQ(client_.overloads, 0);
  setXrunFrames(1100);
  runCycle();
  runCycle();
  EXPECT_EQ(client_.overloads, 1);
  setXrunFrames(1101);
  runCycle();
  EXPECT_EQ(client_.overloads, 2);
}

TEST_F(PipeWireCycleRunner, AnXrunInWhichTheClockHasGoneOnIsOneOverload) {
  runCycle();
  setXrunFrames(64);
  position_.clock.position += 64;
  runCycle();
  EXPECT_EQ(client_.overloads, 1);
}

TEST_F(PipeWireCycleRunner, AnotherClocksXrunsAreNotOurs) {
  runCycle();
  position_.clock.id = 8;
  setXrunFrames(64);
  runCycle();
  EXPECT_EQ(client_.overloads, 0);
}

/// A device of one output, whose port has a single buffer.
class PipeWireOutputPort : public testing::Test {
 protected:
  PipeWireOutputPort() {
    library_.pw_filter_dequeue_buffer = [](void* port) {
      return of(port).isFree ? &of(port).buffer : nullptr;
    };
    library_.pw_filter_queue_buffer = [](void* port, pw_buffer* /*buffer*/) {
      ++of(port).queued;
      return 0;
    };
    port_.data.data = port_.samples;
    port_.data.maxsize = sizeof port_.samples;
    port_.data.chunk = &port_.chunk;
    port_.block.datas = &port_.data;
    port_.buffer.buffer = &port_.block;
    hal::pipewire::setSampleBytes(port_.buffer, sizeof port_.samples);
    runner_.setPorts({}, {&port_});
    runner_.setRunning(true);
    position_.clock.rate = {1, 48000};
    position_.clock.duration = 256;
  }

  void runCycle() {
    runner_.process(&position_);
    position_.clock.position += 256;
  }

  struct Port : hal::pipewire::FilterPort {
    spa_io_buffers area{};
    float samples[256]{};
    spa_chunk chunk{};
    spa_data data{};
    spa_buffer block{};
    pw_buffer buffer{};
    bool isFree = true;
    int queued = 0;
  };

  static Port& of(void* port) { return *static_cast<Port*>(static_cast<hal::pipewire::FilterPort*>(port)); }

  Library library_{};
  ClockClient client_;
  CycleRunner runner_{library_, client_, {}, {1}};
  Port port_;
  spa_io_position position_{};
};

TEST_F(PipeWireOutputPort, ThatTheGraphEmptiesIsFilledInEveryCycle) {
  port_.io = &port_.area;
  for (int cycle = 0; cycle < 5; ++cycle) runCycle();
  EXPECT_EQ(port_.queued, 5);
  EXPECT_EQ(client_.cycles, 5);
}

// Otherwise the library would deliver the old buffer in place of each new one, and the port would stay a
// cycle late.
TEST_F(PipeWireOutputPort, WhoseLastBufferNobodyHasTakenGetsNoOther) {
  port_.io = &port_.area;
  port_.area.status = SPA_STATUS_HAVE_DATA;
  runCycle();
  EXPECT_EQ(port_.queued, 0);
  EXPECT_EQ(client_.cycles, 1);
  port_.area.status = SPA_STATUS_NEED_DATA;
  runCycle();
  EXPECT_EQ(port_.queued, 1);
}

TEST_F(PipeWireOutputPort, ThatHasBuffersBeforeItHasSomewhereToPutThemIsNotFilled) {
  runCycle();
  EXPECT_EQ(port_.queued, 0);
  port_.io = &port_.area;
  runCycle();
  EXPECT_EQ(port_.queued, 1);
}

/// A device of one input. The test fills its port's buffers, each with its own sample, and hands them over.
class PipeWireInputPort : public testing::Test {
 protected:
  PipeWireInputPort() {
    library_.pw_filter_dequeue_buffer = [](void* port) {
      auto& waiting = of(port).waiting;
      if (waiting.empty()) return static_cast<pw_buffer*>(nullptr);
      pw_buffer* const next = waiting.front();
      waiting.pop_front();
      return next;
    };
    library_.pw_filter_queue_buffer = [](void* port, pw_buffer* buffer) {
      of(port).returned.push_back(buffer);
      return 0;
    };
    for (std::size_t i = 0; i < 2; ++i) {
      Buffer& buffer = port_.buffers[i];
      std::fill(std::begin(buffer.samples), std::end(buffer.samples), static_cast<float>(i + 1));
      buffer.chunk = {0, sizeof buffer.samples, sizeof(float), 0};
      buffer.data.data = buffer.samples;
      buffer.data.maxsize = sizeof buffer.samples;
      buffer.data.chunk = &buffer.chunk;
      buffer.block.datas = &buffer.data;
      buffer.buffer.buffer = &buffer.block;
      hal::pipewire::setSampleBytes(buffer.buffer, sizeof buffer.samples);
    }
    runner_.setPorts({&port_}, {});
    runner_.setRunning(true);
    position_.clock.rate = {1, 48000};
    position_.clock.duration = 256;
  }

  /// Runs a cycle and returns the sample that the callback saw.
  float sampleOfCycle() {
    runner_.process(&position_);
    position_.clock.position += 256;
    return client_.sample;
  }

  struct Buffer {
    float samples[256]{};
    spa_chunk chunk{};
    spa_data data{};
    spa_buffer block{};
    pw_buffer buffer{};
  };

  struct Port : hal::pipewire::FilterPort {
    Buffer buffers[2];
    std::deque<pw_buffer*> waiting;
    std::vector<pw_buffer*> returned;
  };

  class SampleClient final : public hal::SessionClient {
   public:
    void cycle(const hal::IoCycle& cycle) noexcept override {
      const void* const data = cycle.input->mBuffers[0].mData;
      sample = data != nullptr ? *static_cast<const float*>(data) : 0.0F;
    }
    void overload() noexcept override {}
    void aliveChanged(bool /*alive*/) noexcept override {}
    void formatChanged(double /*sampleRateHz*/, std::uint32_t /*frames*/) noexcept override {}

    float sample = 0.0F;
  };

  static Port& of(void* port) { return *static_cast<Port*>(static_cast<hal::pipewire::FilterPort*>(port)); }

  Library library_{};
  SampleClient client_;
  CycleRunner runner_{library_, client_, {1}, {}};
  Port port_;
  spa_io_position position_{};
};

TEST_F(PipeWireInputPort, ThatHasOneBufferGivesIt) {
  port_.waiting = {&port_.buffers[0].buffer};
  EXPECT_EQ(sampleOfCycle(), 1.0F);
  EXPECT_EQ(port_.returned, std::vector{&port_.buffers[0].buffer});
}

// Otherwise the port would give the buffer of the last cycle in every cycle.
TEST_F(PipeWireInputPort, ThatHasABufferOfAnEarlierCycleGivesTheNewest) {
  port_.waiting = {&port_.buffers[0].buffer, &port_.buffers[1].buffer};
  EXPECT_EQ(sampleOfCycle(), 2.0F);
  EXPECT_EQ(port_.returned, (std::vector{&port_.buffers[0].buffer, &port_.buffers[1].buffer}));
}

}  // namespace
}  // namespace tolvane::test
