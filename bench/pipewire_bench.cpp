// The busy time of `tolvanectl run` in a cycle of 64 frames, compared with that of the server's own mixers: a
// filter chain with a `copy` for each input and a `mixer` for each output. Both run in turns on the same
// private server, between the same source and sink.
//
// Usage: pipewire_bench TOLVANECTL [TURNS]. Prints a line for each matrix: case|ours|rival|ratio|limit.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/child.h"
#include "bench/matrix_case.h"
#include "bench/median.h"
#include "bench/node_profile.h"
#include "core/patch/gain_text.h"
#include "support/eventually.h"
#include "support/pipewire_client.h"
#include "support/pipewire_server.h"
#include "support/pipewire_signal_node.h"

namespace tolvane::bench {
namespace {

constexpr const char* kFrames = "64";
constexpr std::size_t kCyclesATurn = 250;
constexpr std::uint64_t kRightCycles = 20;

// Each input of a filter chain goes to one port only, so a `copy` fans it out.
constexpr const char* kChainHead = R"(
context.properties = { support.dbus = false }
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
}
context.modules = [
    { name = libpipewire-module-rt args = { nice.level = -11 rt.prio = 83 } flags = [ ifexists nofail ] }
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-filter-chain args = {
)";

std::string positions(std::size_t channels) {
  std::string text = "[";
  for (std::size_t n = 0; n < channels; ++n) text += " AUX" + std::to_string(n);
  return text + " ]";
}

std::string streamProperties(const char* name, std::size_t channels) {
  return std::string("{ node.name = ") + name + " audio.channels = " + std::to_string(channels) +
         " audio.position = " + positions(channels) + " }";
}

/// A configuration of the `pipewire` program that runs the matrix as a filter chain.
std::string chainConfig(const MatrixCase& matrix) {
  std::vector<std::string> mixers(matrix.channels);
  std::vector<std::size_t> used(matrix.channels);
  std::ostringstream links;
  for (const PatchConnection& route : matrix.routes()) {
    const auto output = static_cast<std::size_t>(route.outputChannel);
    const std::string number = std::to_string(++used[output]);
    mixers[output] += " \"Gain " + number + "\" = " + gainText(route.gain);
    links << "{ output = \"in" << route.inputChannel << ":Out\" input = \"out" << output << ":In " << number
          << "\" }\n";
  }
  std::ostringstream nodes;
  std::ostringstream inputs;
  std::ostringstream outputs;
  for (std::size_t n = 0; n < matrix.channels; ++n) {
    nodes << "{ type = builtin name = in" << n << " label = copy }\n";
    nodes << "{ type = builtin name = out" << n << " label = mixer control = {" << mixers[n] << " } }\n";
    inputs << " \"in" << n << ":In\"";
    outputs << " \"out" << n << ":Out\"";
  }
  std::ostringstream config;
  config << kChainHead << "filter.graph = { nodes = [\n"
         << nodes.str() << "] links = [\n"
         << links.str() << "] inputs = [" << inputs.str() << " ] outputs = [" << outputs.str() << " ] }\n"
         << "capture.props = " << streamProperties("matrix.capture", matrix.channels) << '\n'
         << "playback.props = " << streamProperties("matrix.playback", matrix.channels) << "\n} } ]\n";
  return config.str();
}

/// Gives a stream of the chain a port for each channel, as a session manager does.
void makePorts(test::PipeWireClient& client, const std::string& node, const char* direction,
               std::size_t channels) {
  const auto isThere = [&] { return std::ranges::count(client.nodeNames(), node) != 0; };
  if (!test::eventually(isThere)) throw std::runtime_error(node + " does not come up");
  const std::string command =
      "pw-cli set-param " + node + " PortConfig '{ direction = " + direction +
      " mode = dsp format = { mediaType = audio mediaSubtype = raw format = F32P rate = 48000 channels = " +
      std::to_string(channels) + " position = " + positions(channels) + " } }' >/dev/null 2>&1";
  if (std::system(command.c_str()) != 0) throw std::runtime_error("pw-cli makes no ports for " + node);
}

/// Plays the signal into the card's source and checks what arrives at its sink.
class SignalCheck {
 public:
  SignalCheck(test::PipeWireClient& client, const MatrixCase& matrix)
      : expected_(outputSamples(matrix)),
        feeder_(client, "feeder", PW_DIRECTION_OUTPUT, matrix.channels, &feed, this),
        recorder_(client, "recorder", PW_DIRECTION_INPUT, matrix.channels, &check, this) {
    for (unsigned n = 0; n < matrix.channels; ++n) {
      client.link({"feeder", false, n}, {"card.source", true, n});
      client.link({"card.sink", false, n}, {"recorder", true, n});
    }
  }

  /// Waits until the last contender is no longer heard. Throws std::runtime_error if it still is after 30 s.
  void awaitQuiet() const {
    if (!test::eventually([this] { return rightCycles_ == 0; }))
      throw std::runtime_error("the card plays without a contender");
  }

  /// Throws std::runtime_error unless every output plays its sample for some cycles in a row, within 30 s.
  void awaitRight(const char* who) const {
    const std::uint64_t begin = cycles_;
    const auto isRight = [&] { return rightCycles_ >= kRightCycles && cycles_ - begin >= kRightCycles; };
    if (!test::eventually(isRight)) throw std::runtime_error(std::string("wrong output of ") + who);
  }

 private:
  static void feed(void* /*self*/, const spa_io_clock& clock, std::span<float* const> buffers) {
    for (std::size_t channel = 0; channel < buffers.size(); ++channel) {
      if (buffers[channel] != nullptr) std::fill_n(buffers[channel], clock.duration, inputSample(channel));
    }
  }

  static void check(void* self, const spa_io_clock& clock, std::span<float* const> buffers) {
    auto& check = *static_cast<SignalCheck*>(self);
    bool isRight = true;
    for (std::size_t channel = 0; channel < buffers.size(); ++channel) {
      const float* const buffer = buffers[channel];
      const float expected = check.expected_[channel];
      isRight =
          isRight && buffer != nullptr && buffer[0] == expected && buffer[clock.duration - 1] == expected;
    }
    check.rightCycles_ = isRight ? check.rightCycles_ + 1 : 0;
    ++check.cycles_;
  }

  std::vector<float> expected_;
  std::atomic<std::uint64_t> rightCycles_ = 0;  // in a row, up to the last one
  std::atomic<std::uint64_t> cycles_ = 0;
  test::SignalNode feeder_;
  test::SignalNode recorder_;
};

/// One of the two that are compared.
struct Contender {
  const char* name;
  std::vector<std::string> command;
  std::vector<std::string> nodes;
  std::function<void(test::PipeWireClient&)> link;
};

/// Runs the contender alone. Returns the median of its busy time per cycle.
double busyNsOf(const Contender& contender, const SignalCheck& signal) {
  signal.awaitQuiet();
  const Child child(contender.command);
  test::PipeWireClient client;  // the links live as long as it
  contender.link(client);
  signal.awaitRight(contender.name);
  std::vector<std::uint32_t> ids;
  for (const std::string& node : contender.nodes) ids.push_back(client.nodeId(node));
  NodeProfile profile(client);
  const auto busy = median(profile.busyNs(ids, kCyclesATurn));
  signal.awaitRight(contender.name);
  return static_cast<double>(busy);
}

void compareOn(const MatrixCase& matrix, const std::string& tolvanectl, int turns) {
  test::PipeWireCard card;
  card.name = "card";
  card.inputs = card.outputs = static_cast<unsigned>(matrix.channels);
  card.cardId = 1;
  const test::PipeWireServer server({card});
  const std::string folder = server.configFolder();
  std::filesystem::create_directories(folder);
  writePatch(matrix, folder + "/patch.json");
  std::ofstream(folder + "/matrix.conf") << chainConfig(matrix);

  test::PipeWireClient client;
  client.setSetting("clock.force-quantum", kFrames);
  const SignalCheck signal(client, matrix);
  const Contender ours = {"tolvanectl",
                          {tolvanectl, "run", "--patch", folder + "/patch.json", "--device", "card"},
                          {"tolvane"},
                          [](test::PipeWireClient&) {}};
  const auto linkChain = [&](test::PipeWireClient& linker) {
    makePorts(linker, "matrix.capture", "Input", matrix.channels);
    makePorts(linker, "matrix.playback", "Output", matrix.channels);
    for (unsigned n = 0; n < matrix.channels; ++n) {
      linker.link({"card.source", false, n}, {"matrix.capture", true, n});
      linker.link({"matrix.playback", false, n}, {"card.sink", true, n});
    }
  };
  const Contender rival = {"the filter chain",
                           {"pipewire", "-c", folder + "/matrix.conf"},
                           {"matrix.capture", "matrix.playback"},
                           linkChain};
  std::vector<double> oursNs;
  std::vector<double> rivalNs;
  std::vector<double> ratios;
  for (int turn = 0; turn < turns; ++turn) {
    oursNs.push_back(busyNsOf(ours, signal));
    rivalNs.push_back(busyNsOf(rival, signal));
    ratios.push_back(oursNs.back() / rivalNs.back());
  }
  std::printf(
      "busy time in a PipeWire cycle, %s, 64 frames|%.1f µs|PipeWire's own `filter-chain` of mixers, %.1f "
      "µs|%.3f|1\n",
      matrix.name().c_str(), median(oursNs) * 1e-3, median(rivalNs) * 1e-3, median(ratios));
}

}  // namespace
}  // namespace tolvane::bench

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fputs("usage: pipewire_bench TOLVANECTL [TURNS]\n", stderr);
    return 2;
  }
  try {
    const int turns = argc > 2 ? std::max(1, std::atoi(argv[2])) : 20;
    for (const tolvane::bench::MatrixCase& matrix : {tolvane::bench::MatrixCase{8, 8}, {32, 2}}) {
      tolvane::bench::compareOn(matrix, argv[1], turns);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "pipewire_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
