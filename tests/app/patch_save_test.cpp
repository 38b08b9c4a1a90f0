#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <cstdlib>

#include "app/panel_fixture.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PatchSaveTest : public PanelTest {
 protected:
  PatchSaveTest() { openQuietly(); }

  void save(const std::string& name) {
    press("savePatch");
    confirm(path(name));
  }
};

constexpr const char* kTwoRoutes = R"([{"inputChannel":0,"outputChannel":0,"gain":1.0,"active":true},)"
                                   R"({"inputChannel":1,"outputChannel":1,"gain":1.0,"active":true}])";

TEST_F(PatchSaveTest, OpensAFreePanelForJsonFiles) {
  press("savePatch");
  QFileDialog* const open = panel();
  ASSERT_NE(open, nullptr);
  EXPECT_EQ(open->acceptMode(), QFileDialog::AcceptSave);
  EXPECT_FALSE(open->isModal());
  EXPECT_EQ(open->windowModality(), Qt::NonModal);
  EXPECT_EQ(open->parentWidget(), nullptr);
  EXPECT_THAT(open->nameFilters(), ElementsAre("JSON (*.json)"));
  EXPECT_EQ(open->defaultSuffix(), "json");
  EXPECT_EQ(open->findChild<QLineEdit*>("fileNameEdit")->text(), "mypatch.json");
  cancel();
}

TEST_F(PatchSaveTest, WritesTheRoutesAndTellsTheFileName) {
  press("presetThru12");
  statusTexts();
  save("stage.json");
  EXPECT_EQ(contents("stage.json"), kTwoRoutes);
  EXPECT_THAT(statusTexts(), ElementsAre("Patch saved → stage.json"));
}

TEST_F(PatchSaveTest, AnEmptyRouteListIsAnEmptyArray) {
  save("none.json");
  EXPECT_EQ(contents("none.json"), "[]");
  EXPECT_THAT(statusTexts(), ElementsAre("Patch saved → none.json"));
}

TEST_F(PatchSaveTest, ANameWithoutSuffixGetsOne) {
  save("stage");
  EXPECT_TRUE(exists("stage.json"));
  EXPECT_FALSE(exists("stage"));
  EXPECT_THAT(statusTexts(), ElementsAre("Patch saved → stage.json"));
}

TEST_F(PatchSaveTest, ANameOfAnotherTypeGetsTheSuffixAsWell) {
  save("stage.txt");
  EXPECT_TRUE(exists("stage.txt.json"));
  EXPECT_FALSE(exists("stage.txt"));
  EXPECT_THAT(statusTexts(), ElementsAre("Patch saved → stage.txt.json"));
  save("STAGE.JSON");
  EXPECT_TRUE(exists("STAGE.JSON"));
}

TEST_F(PatchSaveTest, AskedWhetherToReplaceIsTheFileThatIsWritten) {
  write("notes.txt.json", "old");
  press("savePatch");
  bool asked = false;
  QTimer question;
  QObject::connect(&question, &QTimer::timeout, [&asked] {
    auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr) return;
    asked = box->text().contains("notes.txt.json");
    box->button(QMessageBox::No)->click();
  });
  question.start(5);
  enter(path("notes.txt"));
  EXPECT_TRUE(asked);
  EXPECT_EQ(contents("notes.txt.json"), "old");
  cancel();
}

TEST_F(PatchSaveTest, AFolderIsEnteredNotSaved) {
  press("savePatch");
  enter(folder.filePath("patches").toStdString());
  QApplication::processEvents();
  ASSERT_NE(panel(), nullptr);
  EXPECT_EQ(panel()->directory().path(), folder.filePath("patches"));
  EXPECT_FALSE(QFile::exists(folder.filePath("patches.json")));
  cancel();
}

TEST_F(PatchSaveTest, ASecondPanelDoesNotHideTheFirst) {
  for (const char* const action : {"savePatch", "loadPatch", "savePatch"}) press(action);
  const auto open = panels();
  ASSERT_EQ(open.size(), 3U);
  for (const QFileDialog* const one : open) {
    for (const QFileDialog* const other : open) {
      if (one == other) continue;
      const QPoint apart = one->pos() - other->pos();
      EXPECT_GE(std::min(std::abs(apart.x()), std::abs(apart.y())), 16) << "each title can be seen";
      EXPECT_LE(std::max(std::abs(apart.x()), std::abs(apart.y())), 64) << "a little off";
    }
  }
}

TEST_F(PatchSaveTest, SavesWhatIsThereWhenThePanelIsConfirmed) {
  press("savePatch");
  press("presetThru12");
  statusTexts();
  confirm(path("late.json"));
  EXPECT_EQ(contents("late.json"), kTwoRoutes);
}

TEST_F(PatchSaveTest, TheWindowStaysUsableBesideThePanel) {
  press("savePatch");
  clickCell(4, 5);
  EXPECT_THAT(routes(), ElementsAre(plainRoute(4, 5)));
  cancel();
}

TEST_F(PatchSaveTest, ACancelledPanelDoesNothing) {
  press("savePatch");
  cancel();
  EXPECT_THAT(statusTexts(), IsEmpty());
  EXPECT_THAT(QDir(folder.filePath("patches")).entryList(QDir::Files), IsEmpty());
}

TEST_F(PatchSaveTest, AGainThatJsonDoesNotKnowWritesNothingAndSaysNothing) {
  addRoute("1", "1", "inf");
  statusTexts();
  save("infinite.json");
  EXPECT_FALSE(exists("infinite.json"));
  EXPECT_THAT(statusTexts(), IsEmpty());
}

TEST_F(PatchSaveTest, AFailedEncodingLeavesTheOldFile) {
  write("kept.json", "[]");
  addRoute("1", "1", "nan");
  statusTexts();
  answerYes();
  save("kept.json");
  EXPECT_EQ(contents("kept.json"), "[]");
  EXPECT_THAT(statusTexts(), IsEmpty());
}

TEST_F(PatchSaveTest, ReplacesALongerFileWhole) {
  write("old.json", std::string(5000, ' ') + "[]");
  answerYes();
  save("old.json");
  EXPECT_EQ(contents("old.json"), "[]");
}

TEST_F(PatchSaveTest, AFailedWriteIsNotReported) {
  press("savePatch");
  auto* const open = panel();
  ASSERT_NE(open, nullptr);
  // A file in a missing folder: a native panel may return it, our panel would refuse it.
  open->setDirectory(folder.path());
  open->selectFile(folder.filePath("missing/lost.json"));
  Q_EMIT open->accepted();
  EXPECT_FALSE(QFile::exists(folder.filePath("missing/lost.json")));
  const auto texts = statusTexts();
  ASSERT_EQ(texts.size(), 1U);
  EXPECT_THAT(texts.front(), ::testing::StartsWith("Patch saved → "));
  open->close();
}

TEST_F(PatchSaveTest, DoesNothingOnceTheControllerIsGone) {
  press("savePatch");
  trace.reset();
  controller.reset();
  confirm(path("orphan.json"));
  EXPECT_FALSE(exists("orphan.json"));
}

}  // namespace
}  // namespace tolvane::test
