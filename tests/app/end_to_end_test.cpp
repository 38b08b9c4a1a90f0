// The whole program in a real X window: pointer and keys go in through the X server, and what comes out is
// heard on the device and read on standard output.
#include <QFile>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>

#include "app/tap_record.h"
#include "app/x_session.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

constexpr double kSampleRateHz = 48000.0;
constexpr float kSinePeak = 0.12589F;  // -18 dBFS

// What the user is promised; instrumented code has more to do at its end.
#ifdef __SANITIZE_ADDRESS__
constexpr int kExitTimeoutMs = 30000;
#else
constexpr int kExitTimeoutMs = 1000;
#endif

struct Point {
  int x, y;
};
constexpr Point kStart{872, 18};
constexpr Point kClear{419, 451};
constexpr Point kSave{73, 691};
constexpr Point kLoad{191, 691};

/// The middle of a cell of the matrix, row and column zero-based.
constexpr Point cell(int row, int column) {
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
  /// Waits until exactly these outputs sound, and have done so for some cycles.
  [[nodiscard]] bool waitForOutputs(const std::vector<int>& outputs) const {
    std::uint64_t since = 0;
    return waitFor([&] {
      const std::uint64_t cycle = tap->cycles;
      if (cycle == 0 || sounding() != outputs) since = 0;
      if (since == 0) since = cycle;
      return since != 0 && cycle >= since + 20 && sounding() == outputs;
    });
  }
  /// The frequency on an output, counted over half a second of the device's time.
  [[nodiscard]] double frequencyHz(int output) const {
    const TapChannel& channel = tap->channels.at(static_cast<std::size_t>(output - 1));
    const std::uint64_t firstFrame = tap->frames;
    const std::uint32_t firstCrossing = channel.crossings;
    EXPECT_TRUE(waitFor([&] { return tap->frames >= firstFrame + 24000; }));
    const auto crossings = static_cast<double>(channel.crossings - firstCrossing);
    return crossings * kSampleRateHz / static_cast<double>(tap->frames - firstFrame);
  }
  [[nodiscard]] float peak(int output) const {
    return tap->channels.at(static_cast<std::size_t>(output - 1)).peak;
  }

  /// Closes the window; the program has one second to end well, whatever it is doing.
  void closeAndWaitForTheEnd() {
    session.requestClose(window);
    ASSERT_TRUE(session.program().waitForFinished(kExitTimeoutMs));
    EXPECT_EQ(session.program().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(session.program().exitCode(), 0);
  }

  /// Types a path into the panel with this title and confirms it.
  void confirmPanel(const std::string& title, const QString& path) {
    const std::string panel = session.windowTitled(title);
    ASSERT_NE(panel, "") << title;
    // A click beside its controls brings the keys to it; its name field has the focus.
    session.click(panel, 4, session.sizeOf(panel).second - 4);
    session.key("ctrl+a");
    session.type(path.toStdString());
    session.key("Return");
    ASSERT_TRUE(session.waitUntilGone(title));
  }

  [[nodiscard]] std::vector<std::string> traceLines(const char* prefix) {
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

TEST_F(EndToEndTest, FromTheFirstClickToTheLast) {
  click(cell(3, 5));
  click(kStart);
  ASSERT_TRUE(waitForOutputs({6}));
  EXPECT_NEAR(peak(6), kSinePeak, 0.001);
  EXPECT_NEAR(frequencyHz(6), 440.0, 20.0) << "input 4 is to be heard";

  click(cell(3, 5));
  ASSERT_TRUE(waitForOutputs({}));

  click(cell(3, 5));
  click(cell(0, 1));
  ASSERT_TRUE(waitForOutputs({2, 6}));
  EXPECT_NEAR(frequencyHz(2), 110.0, 10.0) << "input 1 is to be heard";

  const QString path = session.folder().filePath("stage.json");
  click(kSave);
  confirmPanel("Save As", path);
  QFile saved(path);
  ASSERT_TRUE(waitFor([&saved] { return saved.exists(); }));
  ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
  EXPECT_EQ(saved.readAll().toStdString(),
            R"([{"inputChannel":3,"outputChannel":5,"gain":1.0,"active":true},)"
            R"({"inputChannel":0,"outputChannel":1,"gain":1.0,"active":true}])");

  click(kClear);
  ASSERT_TRUE(waitForOutputs({}));
  click(kLoad);
  confirmPanel("Open", path);
  ASSERT_TRUE(waitForOutputs({2, 6}));

  ASSERT_NO_FATAL_FAILURE(closeAndWaitForTheEnd());

  standardOutput = session.program().readAllStandardOutput();
  const std::string pointer = "0x[0-9a-f]+";
  EXPECT_THAT(traceLines("[Engine]"),
              ElementsAre(MatchesRegex("\\[Engine\\] id=[0-9]+ in=18 out=20"),
                          MatchesRegex("\\[Engine\\] context size=1556 ptr=" + pointer),
                          "[Engine] CreateIOProcID status=0", "[Engine] AudioDeviceStart...",
                          "[Engine] AudioDeviceStart status=0", "[Engine] Running ✓"));
  EXPECT_THAT(traceLines("[IOProc]"),
              ElementsAre(MatchesRegex("\\[IOProc\\] first call clientData=" + pointer),
                          "[IOProc] maxIn=18 maxOut=20", "[IOProc] flattening input ABL...",
                          "[IOProc] inCh=18 — flattening output ABL...", "[IOProc] outCh=20",
                          "[IOProc] frameCount=512", "[IOProc] patchCount=1 routing...",
                          "[IOProc] first call completed OK ✓"));
  EXPECT_EQ(standardOutput.count('\n'), 14) << "and nothing else: " << standardOutput.toStdString();
}

TEST_F(EndToEndTest, ClosingTheStoppedWindowEndsItToo) {
  ASSERT_NO_FATAL_FAILURE(closeAndWaitForTheEnd());
  EXPECT_EQ(session.program().readAllStandardOutput(), "");
}

TEST_F(EndToEndTest, ClosingTheRunningWindowEndsIt) {
  click(kStart);
  ASSERT_TRUE(waitFor([this] { return tap->cycles > 10; }));
  ASSERT_NO_FATAL_FAILURE(closeAndWaitForTheEnd());
}

TEST_F(EndToEndTest, ChannelsTypedByKeysAreRouted) {
  click({63, 451});
  session.key("ctrl+a");
  session.type("7");
  session.key("Tab");
  session.type("12");
  session.key("Tab");
  session.type("0.5");
  session.key("Tab");
  session.key("space");
  click(kStart);
  ASSERT_TRUE(waitForOutputs({12}));
  EXPECT_NEAR(peak(12), kSinePeak / 2, 0.001);
  EXPECT_NEAR(frequencyHz(12), 770.0, 30.0);
}

}  // namespace
}  // namespace tolvane::test
