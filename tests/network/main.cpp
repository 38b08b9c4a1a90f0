// The programs of tests/network/run.
//
// network_signal play SENDER RECEIVER SINK OUTPUT CHANNELS
//   Plays that many channels into the node SINK of the server whose runtime directory is SENDER, and listens
//   to the first channel of the node OUTPUT of RECEIVER's server. Answers each line of its input with one
//   line, and ends with its input: "delay N"  plays N pulses: the delays in milliseconds, shortest, mean and
//   longest "tones" plays the tones from now on, and starts to watch for stalls of the machine "stall"    the
//   longest stall since then, in milliseconds
//
// network_signal judge FILE TONE...
//   Judges a recording whose channels hold these channels of the signal. Prints a line for each, and at the
//   end the worst signal-to-noise ratio in dB, the number of gaps, and the seconds that were judged.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "network/delay_probe.h"
#include "network/judge_tones.h"
#include "network/tones.h"
#include "support/stall_watch.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;

std::unique_ptr<PipeWireClient> clientOf(const std::string& runtimeFolder) {
  ::setenv("XDG_RUNTIME_DIR", runtimeFolder.c_str(), 1);
  return std::make_unique<PipeWireClient>();
}

unsigned number(const std::string& text) {
  return static_cast<unsigned>(std::stoul(text));
}

// Longer than any sound is on its way.
constexpr auto kWayClears = 3s;

class Rig {
 public:
  Rig(const std::string& senderFolder, const std::string& receiverFolder, const std::string& sink,
      const std::string& output, unsigned channels)
      : sender_(clientOf(senderFolder)),
        receiver_(clientOf(receiverFolder)),
        player_(*sender_, "player", channels),
        listener_(*receiver_, "listener") {
    for (unsigned channel = 0; channel < channels; ++channel) {
      sender_->link({"player", false, channel}, {sink, true, channel});
    }
    receiver_->link({output, false, 0}, {"listener", true, 0});
  }

  std::string answer(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "delay") return delays(numberIn(words));
    if (command == "tones") {
      stalls_ = std::make_unique<StallWatch>();
      player_.playTones();
      return "playing";
    }
    if (command == "stall" && stalls_) return std::to_string(stalls_->longest().count());
    throw std::runtime_error("not understood: " + line);
  }

 private:
  static unsigned numberIn(std::istringstream& words) {
    unsigned number = 0;
    if (!(words >> number) || number == 0) throw std::runtime_error("how many?");
    return number;
  }

  std::string delays(unsigned count) {
    player_.playSilence();
    std::this_thread::sleep_for(kWayClears);
    std::vector<double> delaysMs;
    while (delaysMs.size() < count) delaysMs.push_back(delayMs());
    std::sort(delaysMs.begin(), delaysMs.end());
    double sum = 0.0;
    for (const double delay : delaysMs) sum += delay;
    std::array<char, 100> text{};
    std::snprintf(text.data(), text.size(), "%.3f %.3f %.3f", delaysMs.front(), sum / count, delaysMs.back());
    return text.data();
  }

  /// Plays pulses until one is heard: links take a while to carry sound.
  double delayMs() {
    for (int attempt = 0; attempt < 10; ++attempt) {
      listener_.reset();
      const std::uint64_t playedNs = player_.playPulse();
      for (auto waited = 0ms; waited < 4s; waited += 20ms) {
        std::this_thread::sleep_for(20ms);
        const auto heardNs = listener_.heardPulse();
        if (heardNs) return (static_cast<double>(*heardNs) - static_cast<double>(playedNs)) / 1e6;
      }
    }
    throw std::runtime_error("no pulse has been heard");
  }

  std::unique_ptr<PipeWireClient> sender_;
  std::unique_ptr<PipeWireClient> receiver_;
  Player player_;
  Listener listener_;
  std::unique_ptr<StallWatch> stalls_;
};

int play(const std::vector<std::string>& arguments) {
  Rig rig(arguments.at(0), arguments.at(1), arguments.at(2), arguments.at(3), number(arguments.at(4)));
  std::string line;
  while (std::getline(std::cin, line) && line != "end") std::cout << rig.answer(line) << std::endl;
  return 0;
}

void print(unsigned output, const Verdict& verdict) {
  std::printf(
      "  output %u: %.1f s, silence %.2f ms, %.2f %% its tone of %.0f Hz, amplitude %.5f, signal to noise "
      "%.1f dB "
      "(worst block %.1f dB), %u unsteady blocks (first at %.2f s), speed %+.2f ppm (%+.2f to %+.2f)\n",
      output, verdict.seconds, verdict.longestSilenceMs, 100.0 * verdict.ownToneShare, verdict.toneHz,
      verdict.amplitude, verdict.signalToNoiseDb, verdict.worstBlockDb, verdict.unsteadyBlocks,
      verdict.firstUnsteadySeconds, verdict.meanSpeedPpm, verdict.lowestSpeedPpm, verdict.highestSpeedPpm);
}

int judge(const std::vector<std::string>& arguments) {
  std::vector<unsigned> tones;
  for (auto tone = arguments.begin() + 1; tone < arguments.end(); ++tone) {
    tones.push_back(number(*tone));
  }
  const auto verdicts = judgeTones(readSound(arguments.at(0)), tones);
  Verdict worst = verdicts.at(0);
  unsigned output = 1;
  for (const Verdict& verdict : verdicts) {
    print(output++, verdict);
    worst.seconds = std::min(worst.seconds, verdict.seconds);
    worst.longestSilenceMs = std::max(worst.longestSilenceMs, verdict.longestSilenceMs);
    worst.ownToneShare = std::min(worst.ownToneShare, verdict.ownToneShare);
    worst.signalToNoiseDb = std::min(worst.signalToNoiseDb, verdict.signalToNoiseDb);
    worst.unsteadyBlocks = std::max(worst.unsteadyBlocks, verdict.unsteadyBlocks);
  }
  std::printf("%.1f %.2f %.4f %u %.1f\n", worst.seconds, worst.longestSilenceMs, worst.ownToneShare,
              worst.unsteadyBlocks, worst.signalToNoiseDb);
  return 0;
}

int run(std::vector<std::string> arguments) {
  const std::string command = arguments.empty() ? "" : arguments.front();
  if (!arguments.empty()) arguments.erase(arguments.begin());
  if (command == "play" && arguments.size() == 5) return play(arguments);
  if (command == "judge" && arguments.size() >= 2) return judge(arguments);
  throw std::runtime_error("see the head of main.cpp");
}

}  // namespace
}  // namespace tolvane::test

int main(int count, char** words) {
  try {
    return tolvane::test::run({words + 1, words + count});
  } catch (const std::exception& error) {
    std::cerr << "network_signal: " << error.what() << '\n';
    return 1;
  }
}
