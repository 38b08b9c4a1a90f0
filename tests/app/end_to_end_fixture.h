// The whole program in an X window. The outputs of its device are read from the file that both processes
// share.
#pragma once

#include <QFile>
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>

#include "app/tap_record.h"
#include "app/x_session.h"

namespace tolvane::test {

inline constexpr double kSampleRateHz = 48000.0;
// The machine may stall for part of a second while the program sleeps.
inline constexpr int kStallMs = 1000;
// The limit for users. Instrumented code also looks for leaks at its end.
#ifdef __SANITIZE_ADDRESS__
inline constexpr int kLongestEndMs = 30000;
#else
inline constexpr int kLongestEndMs = 1000 + kStallMs;
#endif

struct Point {
  int x, y;
};
inline constexpr Point kStart{872, 18};
inline constexpr Point kClear{419, 451};
inline constexpr Point kSave{73, 691};
inline constexpr Point kLoad{191, 691};
inline constexpr Point kRefresh{468, 72};

/// The middle of a matrix cell; row and column are zero-based.
inline constexpr Point cell(int row, int column) {
  return {56 + 16 * column + 8, 150 + 16 * row + 8};
}

class EndToEndTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session.isUp()) << "Xvfb does not start";
    const QString tapFile = session.folder().filePath("tap");
    QFile file(tapFile);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.resize(sizeof(TapRecord)));
    void* const memory =
        mmap(nullptr, sizeof(TapRecord), PROT_READ | PROT_WRITE, MAP_SHARED, file.handle(), 0);
    ASSERT_NE(memory, MAP_FAILED);
    tap = static_cast<TapRecord*>(memory);
    ASSERT_TRUE(session.start(TOLVANE_END_TO_END_PROGRAM, {tapFile.toStdString()}));
    window = session.windowTitled("Tolvane");
    ASSERT_NE(window, "");
    // A click is lost unless the program already waits for events.
    const std::uint64_t beats = tap->heartbeats;
    ASSERT_TRUE(waitFor([&] { return tap->heartbeats > beats + 2; }));
  }
  void TearDown() override {
    if (tap != nullptr) munmap(tap, sizeof(TapRecord));
  }

  void click(Point point) { session.click(window, point.x, point.y); }

  /// The outputs, one-based, that sounded in the last cycle.
  [[nodiscard]] std::vector<int> sounding() const {
    std::vector<int> outputs;
    for (std::size_t i = 0; i < kTapChannels; ++i) {
      if (tap->channels.at(i).peak > 0.0F) outputs.push_back(static_cast<int>(i) + 1);
    }
    return outputs;
  }
  /// Waits until exactly these outputs have sounded for some cycles.
  [[nodiscard]] bool waitForOutputs(const std::vector<int>& outputs) const {
    std::uint64_t since = 0;
    return waitFor([&] {
      const std::uint64_t cycle = tap->cycles;
      if (cycle == 0 || sounding() != outputs) since = 0;
      if (since == 0) since = cycle;
      return since != 0 && cycle >= since + 20 && sounding() == outputs;
    });
  }
  /// Frequency on an output, measured over half a second of the device's time.
  [[nodiscard]] double frequencyHz(int output) const {
    const TapChannel& channel = tap->channels.at(static_cast<std::size_t>(output - 1));
    const std::uint64_t first = channel.framesAndCrossings;
    std::uint64_t passed = 0;
    EXPECT_TRUE(waitFor([&] {
      passed = channel.framesAndCrossings - first;
      return (passed >> 32U) >= 24000;
    }));
    const auto crossings = static_cast<double>(passed & 0xFFFFFFFFU);
    return crossings * kSampleRateHz / static_cast<double>(passed >> 32U);
  }
  [[nodiscard]] float peak(int output) const {
    return tap->channels.at(static_cast<std::size_t>(output - 1)).peak;
  }

  /// Closes the window. The program must end normally. Whatever it is doing, it may not wait longer than a
  /// second.
  void closeAndWaitForTheEnd() {
    session.requestClose(window);
    const std::optional<int> idleMs = session.idleMsUntilTheEnd();
    ASSERT_TRUE(idleMs) << "it does not end";
    EXPECT_LE(*idleMs, kLongestEndMs);
    EXPECT_EQ(session.program().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(session.program().exitCode(), 0);
  }

  /// Types a path into the panel with this title and confirms it.
  void confirmPanel(const std::string& title, const QString& path) {
    const std::string panel = session.windowTitled(title);
    ASSERT_NE(panel, "") << title;
    // A click beside the panel's controls gives it the keyboard; its name field has the focus.
    session.click(panel, 4, session.sizeOf(panel).second - 4);
    session.key("ctrl+a");
    session.type(path.toStdString());
    session.key("Return");
    ASSERT_TRUE(session.waitUntilGone(title));
  }

  /// Reads the program's new output. Returns how often in total the engine ran or reported a status other
  /// than 0.
  [[nodiscard]] int startOutcomes() {
    session.program().waitForReadyRead(0);
    standardOutput += session.program().readAllStandardOutput();
    const auto isOutcome = [](const std::string& line) {
      const bool isStatus = line.find(" status=") != std::string::npos;
      return line.starts_with("[Engine] Running") || (isStatus && !line.ends_with(" status=0"));
    };
    return static_cast<int>(std::ranges::count_if(traceLines("[Engine]"), isOutcome));
  }

  [[nodiscard]] std::vector<std::string> traceLines(const char* prefix) const {
    std::vector<std::string> lines;
    for (const QByteArray& line : standardOutput.split('\n')) {
      if (line.startsWith(prefix)) lines.push_back(line.toStdString());
    }
    return lines;
  }

  XSession session;
  std::string window;
  TapRecord* tap = nullptr;
  QByteArray standardOutput;
};

}  // namespace tolvane::test
