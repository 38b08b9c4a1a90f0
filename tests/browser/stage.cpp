// The whole command `run` with a stage around it that a test directs: a virtual device whose cycles wait for
// the test.
//
//   browser_stage http=ADDRESS:PORT patch=FILE [scenes=DIR] [token=FILE] [inputs=N] [outputs=N] [name=TEXT]
//                 [input-names=A,B...] [output-names=...] [signal=ones|band]
//
// Lines on standard input, each answered by one line on standard output:
// - "hold" lets the present cycle be the last one: "cycle NUMBER SAMPLE SAMPLE ...", a sample of each output
// - "step" lets one more cycle pass: likewise
// - "go" lets all cycles pass again: "going"
// A SIGTERM, or the end of standard input, ends the run.
#include <array>
#include <charconv>
#include <cmath>
#include <condition_variable>
#include <csignal>
#include <iostream>
#include <map>
#include <mutex>
#include <numbers>
#include <sstream>
#include <string>
#include <thread>

#include <unistd.h>

#include "ctl/process/early_end.h"
#include "ctl/run/command.h"
#include "ctl/support/ones.h"
#include "hal/virtual/virtual_device.h"

namespace tolvane::ctl {
namespace {

/// Fills every channel of every buffer: `sample` gets the channel, counted from 0, and the frame of the run.
template <class Sample>
void fillChannels(std::uint64_t first, std::uint32_t frames, AudioBufferList& list, Sample sample) {
  std::size_t channel = 0;
  for (UInt32 b = 0; b < list.mNumberBuffers; ++b) {
    const AudioBuffer& buffer = list.mBuffers[b];
    auto* samples = static_cast<float*>(buffer.mData);
    for (std::uint32_t f = 0; f < frames; ++f) {
      for (UInt32 c = 0; c < buffer.mNumberChannels; ++c) *samples++ = sample(channel + c, first + f);
    }
    channel += buffer.mNumberChannels;
  }
}

/// Sines of levels that differ, as a band's do.
struct Band : hal::VirtualInput {
  void fill(std::uint64_t first, std::uint32_t frames, AudioBufferList& input) noexcept override {
    fillChannels(first, frames, input, [](std::size_t channel, std::uint64_t frame) {
      static constexpr std::array kDecibels = {-9.0,  -14.0, -12.0, -18.0, -30.0, -16.0, -17.0, -20.0,
                                               -24.0, -25.0, -10.0, -13.0, -15.0, -15.5, -22.0, -23.0,
                                               -11.0, -19.0, -90.0, -90.0, -28.0, -16.0, -16.5, -34.0};
      const double peak = std::pow(10.0, kDecibels[channel % kDecibels.size()] / 20.0);
      const double turns =
          static_cast<double>(frame) * (110.0 + 10.0 * static_cast<double>(channel)) / 48000.0;
      return static_cast<float>(peak * std::sin(2.0 * std::numbers::pi * turns));
    });
  }
};

/// Holds the device's cycles, and tells what each of them sent to the outputs.
class Gate final : public hal::VirtualTap {
 public:
  void observe(std::uint64_t /*first*/, std::uint32_t /*frames*/,
               const AudioBufferList& output) noexcept override {
    std::unique_lock lock(mutex_);
    ++cycle_;
    if (!isHolding_) return;
    tell(output);
    // A pass that was given counts also if the next hold comes before this thread wakes.
    const std::uint64_t passes = passes_;
    passGiven_.wait(lock, [this, passes] { return passes_ != passes; });
  }

  void hold() {
    const std::lock_guard lock(mutex_);
    isHolding_ = true;
  }
  void step() { pass(true); }
  void go() { pass(false); }

 private:
  void pass(bool isHolding) {
    const std::lock_guard lock(mutex_);
    isHolding_ = isHolding;
    ++passes_;
    passGiven_.notify_all();
  }

  /// Nine digits are enough for any float.
  void tell(const AudioBufferList& output) const {
    std::ostringstream line;
    line.precision(9);
    line << "cycle " << cycle_;
    for (UInt32 b = 0; b < output.mNumberBuffers; ++b) {
      const auto* samples = static_cast<const float*>(output.mBuffers[b].mData);
      for (UInt32 c = 0; c < output.mBuffers[b].mNumberChannels; ++c) line << ' ' << samples[c];
    }
    std::cout << line.str() << std::endl;
  }

  std::mutex mutex_;
  std::condition_variable passGiven_;
  std::uint64_t passes_ = 0;  ///< of held cycles
  std::uint64_t cycle_ = 0;
  bool isHolding_ = false;
};

void direct(Gate& gate) {
  for (std::string line; std::getline(std::cin, line);) {
    if (line == "hold") gate.hold();
    if (line == "step") gate.step();
    if (line != "go") continue;
    gate.go();
    std::cout << "going" << std::endl;
  }
  gate.go();
  ::kill(::getpid(), SIGTERM);
}

class Words {
 public:
  Words(int count, char** words) {
    for (int w = 1; w < count; ++w) {
      const std::string word = words[w];
      const std::size_t sign = word.find('=');
      values_[word.substr(0, sign)] = sign == std::string::npos ? "" : word.substr(sign + 1);
    }
  }
  [[nodiscard]] std::string text(const std::string& key, const std::string& otherwise = "") const {
    const auto found = values_.find(key);
    return found == values_.end() ? otherwise : found->second;
  }
  [[nodiscard]] std::uint32_t number(const std::string& key, std::uint32_t otherwise) const {
    const std::string value = text(key);
    std::from_chars(value.data(), value.data() + value.size(), otherwise);
    return otherwise;
  }
  [[nodiscard]] std::vector<std::string> list(const std::string& key) const {
    std::vector<std::string> items;
    std::istringstream all(text(key));
    for (std::string item; std::getline(all, item, ',');) items.push_back(item);
    return items;
  }

 private:
  std::map<std::string, std::string> values_;
};

RunOptions optionsOf(const Words& words) {
  RunOptions options;
  options.patchPath = words.text("patch");
  options.device = words.text("name", "Stage Box");
  options.http = words.text("http");
  options.sceneFolder = words.text("scenes");
  options.tokenPath = words.text("token");
  return options;
}

int play(const Words& words) {
  test::Ones ones;
  Band band;
  Gate gate;
  hal::VirtualDeviceConfig config;
  config.name = words.text("name", "Stage Box");
  config.inputStreams = hal::StreamLayout(words.number("inputs", 8), 1);
  config.outputStreams = hal::StreamLayout(words.number("outputs", 8), 1);
  config.inputNames = words.list("input-names");
  config.outputNames = words.list("output-names");
  if (words.text("signal") == "band")
    config.inputSignal = &band;
  else
    config.inputSignal = &ones;
  config.outputTap = &gate;
  if (hal::configureVirtualDevice(config) != noErr) return 2;
  const SignalsHeld held{SIGTERM};  // in all threads, or one that is not the run's could get it
  std::thread director([&gate] { direct(gate); });
  director.detach();  // it may wait for a line for ever
  const ExitStatus status = runCommand(optionsOf(words));
  gate.go();
  std::cout.flush();
  ::_exit(static_cast<int>(status));  // the director still uses what would end
}

}  // namespace
}  // namespace tolvane::ctl

int main(int count, char** words) {
  return tolvane::ctl::play(tolvane::ctl::Words(count, words));
}
