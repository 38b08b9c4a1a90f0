// The processor time that `tolvanectl run` takes for a cycle of 64 frames on a JACK server, compared with
// that of ecasound, with one chain for each route. Both run in turns on the same private server, with the
// same client as card.
//
// Usage: jack_bench TOLVANECTL PATCH [TURNS]. Writes the routes to the file PATCH. Prints one line:
// case|ours|rival|ratio|limit.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/child.h"
#include "bench/matrix_case.h"
#include "bench/median.h"
#include "core/patch/gain_text.h"
#include "support/eventually.h"
#include "support/jack_server.h"
#include "support/jack_test_client.h"

namespace tolvane::bench {
namespace {

constexpr std::uint32_t kFrames = 64;
constexpr std::size_t kRightFrames = 20 * kFrames;
constexpr auto kTurn = std::chrono::seconds(1);

/// The processor time of all threads of a process.
double cpuSecondsOf(pid_t pid) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &time) != 0)
    throw std::runtime_error("the program has ended");
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// ecasound with mono inputs and outputs that are the card's ports, and a chain with one gain for each route.
std::vector<std::string> ecasoundCommand(const MatrixCase& matrix) {
  std::map<std::int64_t, std::string> chainsOfInput;
  std::map<std::int64_t, std::string> chainsOfOutput;
  std::vector<std::string> gains;
  int count = 0;
  const auto add = [](std::string& list, const std::string& chain) {
    list += (list.empty() ? "-a:" : ",") + chain;
  };
  for (const PatchConnection& route : matrix.routes()) {
    const std::string chain = "route" + std::to_string(++count);
    add(chainsOfInput[route.inputChannel], chain);
    add(chainsOfOutput[route.outputChannel], chain);
    gains.push_back("-a:" + chain);
    gains.push_back("-ea:" + gainText(route.gain * 100.0F));  // percent
  }
  // Each output is the sum of its chains. Without an argument for it, ecasound takes their mean.
  std::vector<std::string> command = {
      "ecasound", "-q", "-b:64", "-z:mixmode,sum", "-G:jack,rival,notransport", "-f:f32_le,1,48000"};
  for (const auto& [input, chains] : chainsOfInput)
    command.insert(command.end(), {chains, "-i:jack_multi,card:capture_" + std::to_string(input + 1)});
  for (const auto& [output, chains] : chainsOfOutput)
    command.insert(command.end(), {chains, "-o:jack_multi,card:playback_" + std::to_string(output + 1)});
  command.insert(command.end(), gains.begin(), gains.end());
  return command;
}

/// The sound card: plays the signal into the contender and checks what comes back.
class Card {
 public:
  explicit Card(const MatrixCase& matrix)
      : expected_(outputSamples(matrix)),
        client_(test::JackTestClient::card("card", matrix.channels, matrix.channels)) {
    client_.setSignal([](std::size_t channel, std::uint64_t /*frame*/) { return inputSample(channel); });
    client_.activate();
  }

  [[nodiscard]] std::uint64_t cycles() const { return client_.cycles(); }

  /// Waits until the last contender is no longer heard. Throws std::runtime_error if it still is after 30 s.
  void awaitQuiet() {
    if (!test::eventually([this] { return !isRight(); }))
      throw std::runtime_error("the card plays without a contender");
  }

  /// Throws std::runtime_error unless every output plays its sample for some cycles in a row, within 30 s.
  void awaitRight(const char* who) {
    if (!test::eventually([this] { return isRight(); }))
      throw std::runtime_error(std::string("wrong output of ") + who);
  }

 private:
  bool isRight() {
    client_.record(kRightFrames);
    if (!client_.awaitRecording()) return false;
    for (std::size_t channel = 0; channel < expected_.size(); ++channel) {
      const std::vector<float>& samples = client_.recording(channel);
      if (std::ranges::count(samples, expected_[channel]) != std::ssize(samples)) return false;
    }
    return true;
  }

  std::vector<float> expected_;
  test::JackTestClient client_;
};

/// Runs the contender alone. Returns its processor time per cycle.
double cpuSecondsACycle(const char* name, const std::vector<std::string>& command, Card& card) {
  card.awaitQuiet();
  const Child child(command);
  card.awaitRight(name);
  const double beginSeconds = cpuSecondsOf(child.pid());
  const std::uint64_t beginCycles = card.cycles();
  std::this_thread::sleep_for(kTurn);
  const double seconds = cpuSecondsOf(child.pid()) - beginSeconds;
  const auto cycles = static_cast<double>(card.cycles() - beginCycles);
  card.awaitRight(name);
  return seconds / cycles;
}

void compareOn(const MatrixCase& matrix, const std::string& tolvanectl, const std::string& patch, int turns) {
  writePatch(matrix, patch);
  const test::JackServer server(kFrames);
  Card card(matrix);
  std::vector<double> ours;
  std::vector<double> rival;
  std::vector<double> ratios;
  for (int turn = 0; turn < turns; ++turn) {
    ours.push_back(
        cpuSecondsACycle("tolvanectl", {tolvanectl, "run", "--patch", patch, "--device", "card"}, card));
    rival.push_back(cpuSecondsACycle("ecasound", ecasoundCommand(matrix), card));
    ratios.push_back(ours.back() / rival.back());
  }
  std::printf(
      "CPU of the process in a JACK cycle, %s, 64 frames|%.1f µs|`ecasound`, one chain per route, %.1f "
      "µs|%.3f|1\n",
      matrix.name().c_str(), median(ours) * 1e6, median(rival) * 1e6, median(ratios));
}

}  // namespace
}  // namespace tolvane::bench

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::fputs("usage: jack_bench TOLVANECTL PATCH [TURNS]\n", stderr);
    return 2;
  }
  try {
    const int turns = argc > 3 ? std::max(1, std::atoi(argv[3])) : 20;
    tolvane::bench::compareOn({8, 8}, argv[1], argv[2], turns);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "jack_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
