#include <QApplication>
#include <QTest>
#include <cstddef>

#include "app/panel_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kThreeRoutes = R"([
  {"inputChannel": 2, "outputChannel": 4, "gain": 0.5, "active": true},
  {"inputChannel": 0, "outputChannel": 1, "gain": 1, "active": false},
  {"inputChannel": 300, "outputChannel": -1, "gain": 1.0, "active": true, "comment": "far"}
])";

std::vector<std::byte> bytesOf(const IOProcContext& context) {
  const auto* const first = reinterpret_cast<const std::byte*>(&context);
  return {first, first + sizeof context};
}

class PatchLoadTest : public PanelTest {
 protected:
  PatchLoadTest() { openQuietly(); }

  void load(const std::string& name) {
    press("loadPatch");
    confirm(path(name));
  }
};

TEST_F(PatchLoadTest, OpensAFreePanelForOneJsonFile) {
  press("loadPatch");
  QFileDialog* const open = panel();
  ASSERT_NE(open, nullptr);
  EXPECT_EQ(open->acceptMode(), QFileDialog::AcceptOpen);
  EXPECT_EQ(open->fileMode(), QFileDialog::ExistingFile);
  EXPECT_FALSE(open->isModal());
  EXPECT_EQ(open->parentWidget(), nullptr);
  EXPECT_THAT(open->nameFilters(), ElementsAre("JSON (*.json)"));
  cancel();
}

TEST_F(PatchLoadTest, ReplacesTheRoutesAsTheyStand) {
  clickCell(9, 9);
  statusTexts();
  write("three.json", kThreeRoutes);
  load("three.json");
  EXPECT_THAT(routes(), ElementsAre(PatchConnection{2, 4, 0.5F, true}, PatchConnection{0, 1, 1.0F, false},
                                    PatchConnection{300, -1, 1.0F, true}));
  EXPECT_THAT(statusTexts(), ElementsAre("3 connection(s) configured — press Start to route.",
                                         "Patch loaded: 3 connection(s)"));
  EXPECT_THAT(control<PatchMatrixView>("patchMatrixView").connections,
              ::testing::UnorderedElementsAre("2,4", "0,1", "300,-1"));
}

TEST_F(PatchLoadTest, ShowsAnInactiveRouteDimmed) {
  write("three.json", kThreeRoutes);
  load("three.json");
  ASSERT_EQ(tableTexts().size(), 3U);
  EXPECT_THAT(tableTexts()[1], ElementsAre("Ch 1", "Ch 2", "1.00", "○"));
  EXPECT_THAT(tableTexts()[2], ElementsAre("Ch 301", "Ch 0", "1.00", "✓"));
  const QAbstractItemModel& model = *control<ConnectionsTableView>("connectionsTableView").model();
  for (int column = 0; column < 4; ++column) {
    EXPECT_EQ(model.index(1, column).data(Qt::ForegroundRole).value<QColor>(), QColor(115, 115, 115));
    EXPECT_EQ(model.index(0, column).data(Qt::ForegroundRole).value<QColor>(), QColor(255, 255, 255));
  }
  EXPECT_EQ(model.index(1, 3).data(Qt::AccessibleTextRole).toString(), "off");
}

TEST_F(PatchLoadTest, AnEmptyArrayEmptiesTheRouteList) {
  press("presetThru12");
  statusTexts();
  write("none.json", "[]");
  load("none.json");
  EXPECT_THAT(routes(), IsEmpty());
  EXPECT_THAT(tableTexts(), IsEmpty());
  EXPECT_EQ(statusText(), "Patch loaded: 0 connection(s)");
}

TEST_F(PatchLoadTest, DuplicatesAreKept) {
  write("twice.json", R"([{"inputChannel":1,"outputChannel":1,"gain":1.0,"active":true},
                          {"inputChannel":1,"outputChannel":1,"gain":1.0,"active":true}])");
  load("twice.json");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(1, 1), plainRoute(1, 1)));
  clickCell(1, 1);
  EXPECT_THAT(routes(), ElementsAre(plainRoute(1, 1))) << "a click takes the first of them";
}

TEST_F(PatchLoadTest, AClickOnAnInactiveRoutesCellAddsAPlainOne) {
  write("three.json", kThreeRoutes);
  load("three.json");
  clickCell(0, 1);
  ASSERT_EQ(routes().size(), 4U);
  EXPECT_EQ(routes()[1], (PatchConnection{0, 1, 1.0F, false}));
  EXPECT_EQ(routes()[3], plainRoute(0, 1));
}

TEST_F(PatchLoadTest, WhatIsNoPatchChangesNothingAndSaysNothing) {
  press("presetThru12");
  statusTexts();
  for (const char* const text :
       {"", "{", "{}", "nonsense", "[1]", R"([{"inputChannel":1,"outputChannel":1,"gain":1.0}])",
        R"([{"inputChannel":"1","outputChannel":1,"gain":1.0,"active":true}])"}) {
    write("bad.json", text);
    load("bad.json");
    EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0), plainRoute(1, 1))) << text;
    EXPECT_THAT(statusTexts(), IsEmpty()) << text;
  }
}

TEST_F(PatchLoadTest, AFileThatCannotBeReadChangesNothing) {
  press("presetThru12");
  statusTexts();
  write("gone.json", "[]");
  press("loadPatch");
  auto* const open = panel();
  ASSERT_NE(open, nullptr);
  open->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path("gone.json")));
  ASSERT_EQ(open->selectedFiles().value(0).toStdString(), path("gone.json"));
  QFile::remove(QString::fromStdString(path("gone.json")));
  Q_EMIT open->accepted();
  EXPECT_EQ(routes().size(), 2U);
  EXPECT_THAT(statusTexts(), IsEmpty());
  open->close();
}

TEST_F(PatchLoadTest, AFileOfAnotherTypeIsNotTaken) {
  press("presetThru12");
  statusTexts();
  write("patch.txt", kThreeRoutes);
  write("PATCH.JSON", kThreeRoutes);
  press("loadPatch");
  enter(path("patch.txt"));
  QApplication::processEvents();
  EXPECT_NE(panel(), nullptr);
  EXPECT_EQ(routes().size(), 2U);
  EXPECT_THAT(statusTexts(), IsEmpty());
  confirm(path("PATCH.JSON"));
  EXPECT_EQ(routes().size(), 3U);
}

TEST_F(PatchLoadTest, ACancelledPanelDoesNothing) {
  press("presetThru12");
  statusTexts();
  press("loadPatch");
  cancel();
  EXPECT_EQ(routes().size(), 2U);
  EXPECT_THAT(statusTexts(), IsEmpty());
}

TEST_F(PatchLoadTest, ARunningEngineRoutesByItAtOnce) {
  press("startStopTapped");
  press("presetThru12");
  statusTexts();
  deviceCalls();
  write("three.json", kThreeRoutes);
  load("three.json");
  EXPECT_THAT(deviceCalls(), IsEmpty());
  EXPECT_TRUE(CoreAudioEngine::shared().isRunning());
  const auto entries = publishedEntries();
  ASSERT_EQ(entries.size(), 2U) << "the inactive one stays out";
  EXPECT_EQ(entries[0].src, 2);
  EXPECT_EQ(entries[0].dst, 4);
  EXPECT_EQ(entries[0].gain, 0.5F);
  EXPECT_EQ(entries[1].src, 300);
  EXPECT_EQ(entries[1].dst, -1);
  EXPECT_THAT(statusTexts(), ElementsAre("● Live  •  2 route(s) active", "Patch loaded: 3 connection(s)"));
}

TEST_F(PatchLoadTest, WhatIsNoPatchLeavesARunningEngineAsItIs) {
  press("presetThru12");
  press("startStopTapped");
  statusTexts();
  hal.takeCalls();
  const IOProcContext* const context = CoreAudioEngine::shared().contextPtr();
  const std::vector<std::byte> before = bytesOf(*context);
  for (const char* const text : {"", "{}", "{\"inputChannel\": 1}", "nonsense", "[1]", "null"}) {
    write("bad.json", text);
    load("bad.json");
    EXPECT_TRUE(CoreAudioEngine::shared().isRunning()) << text;
    EXPECT_EQ(CoreAudioEngine::shared().contextPtr(), context) << text;
    EXPECT_EQ(bytesOf(*context), before) << "nothing was published: " << text;
    EXPECT_THAT(hal.takeCalls(), IsEmpty()) << text;
    EXPECT_THAT(statusTexts(), IsEmpty()) << text;
    EXPECT_EQ(buttonOf("startStopTapped").text(), "■  Stop") << text;
  }
}

TEST_F(PatchLoadTest, InactiveRoutesAreConfiguredAndNotLive) {
  write("two.json", R"([{"inputChannel":1,"outputChannel":1,"gain":1.0,"active":true},
                        {"inputChannel":2,"outputChannel":2,"gain":1.0,"active":false}])");
  load("two.json");
  clickCell(3, 3);
  EXPECT_EQ(statusText(), "3 connection(s) configured — press Start to route.");
  press("startStopTapped");
  EXPECT_EQ(statusText(), "● Running on Studio Mix  •  2 active route(s)");
  clickCell(4, 4);
  EXPECT_EQ(statusText(), "● Live  •  3 route(s) active");
}

TEST_F(PatchLoadTest, StartCountsActiveRoutesOnly) {
  write("three.json", kThreeRoutes);
  load("three.json");
  press("startStopTapped");
  EXPECT_EQ(statusText(), "● Running on Studio Mix  •  2 active route(s)");
}

TEST_F(PatchLoadTest, NeverChangesTheDevice) {
  write("three.json", kThreeRoutes);
  hal.takeCalls();
  load("three.json");
  EXPECT_THAT(hal.takeCalls(), IsEmpty());
  EXPECT_EQ(controller->selectedDevice()->id, 7U);
  EXPECT_FALSE(CoreAudioEngine::shared().isRunning());
}

TEST_F(PatchLoadTest, ASavedPatchComesBackEqual) {
  addRoute("3", "5", "0.1");
  clickCell(0, 1);
  const auto before = routes();
  press("savePatch");
  confirm(path("round.json"));
  press("clearConnections");
  load("round.json");
  EXPECT_EQ(routes(), before);
}

TEST_F(PatchLoadTest, DoesNothingOnceTheControllerIsGone) {
  write("three.json", kThreeRoutes);
  press("loadPatch");
  trace.reset();
  controller.reset();
  confirm(path("three.json"));
  EXPECT_EQ(panel(), nullptr);
}

}  // namespace
}  // namespace tolvane::test
