// The whole program in a real X window. Pointer and keys go through the X server. The results are read from
// the device and from standard output.
#include <QDirIterator>

#include "app/end_to_end_fixture.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

constexpr float kSinePeak = 0.12589F;  // -18 dBFS

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
  std::string saved;
  // The file exists before its contents are written.
  ASSERT_TRUE(waitFor([&] {
    QFile file(path);
    saved = file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "";
    return saved.ends_with(']');
  }));
  EXPECT_EQ(saved, R"([{"inputChannel":3,"outputChannel":5,"gain":1.0,"active":true},)"
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

TEST_F(EndToEndTest, TheFilePanelsKeepNothing) {
  const QString path = session.folder().filePath("stage.json");
  click(kSave);
  confirmPanel("Save As", path);
  click(kLoad);
  confirmPanel("Open", path);
  ASSERT_NO_FATAL_FAILURE(closeAndWaitForTheEnd());
  QDirIterator left(session.folder().filePath("config"),
                    QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
  EXPECT_FALSE(left.hasNext()) << left.next().toStdString();
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

TEST_F(EndToEndTest, TheWindowHasItsIconWhereverTheProgramLies) {
  // For each size: width, height and one word per pixel.
  EXPECT_GT(session.propertyWords(window, "_NET_WM_ICON"), 2 + 32 * 32);
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
