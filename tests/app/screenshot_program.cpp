// Draws the window in its states, and its panels, into PNG files, with scripted devices. Usage: FOLDER SCALE.
// The scale only names the files; QT_SCALE_FACTOR sets it.
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <clocale>
#include <cstdio>
#include <functional>
#include <string>

#include "app/app_delegate.h"
#include "app/palette.h"
#include "app/tolvane_view_controller.h"
#include "matrix/overlay_scroll_view.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_view.h"
#include "support/scripted_hal.h"

namespace {

using tolvane::AppDelegate;
using tolvane::PatchMatrixView;
using tolvane::test::ScriptedDevice;
using tolvane::test::ScriptedHal;

struct Scene {
  const char* name;
  std::vector<ScriptedDevice> devices;
  std::function<void(AppDelegate&)> prepare;
  bool keepsFocus = false;
  bool isOfPanel = false;
};

ScriptedDevice device(const char* name, std::vector<UInt32> inputs, std::vector<UInt32> outputs) {
  ScriptedDevice made;
  made.id = 57;
  made.name = name;
  made.inputStreams = std::move(inputs);
  made.outputStreams = std::move(outputs);
  return made;
}

PatchMatrixView& matrixOf(AppDelegate& delegate) {
  return *delegate.window()->findChild<PatchMatrixView*>(QStringLiteral("patchMatrixView"));
}

/// Twelve routes of a typical monitoring patch: two pairs straight through, the rest spread.
void routeAndStart(AppDelegate& delegate) {
  constexpr int kRoutes[12][2] = {{0, 0}, {1, 1}, {2, 4},  {3, 5},   {4, 8},  {5, 9},
                                  {6, 2}, {7, 3}, {8, 12}, {10, 14}, {0, 16}, {1, 17}};
  for (const auto& [input, output] : kRoutes) matrixOf(delegate).onConnectionToggled(input, output);
  delegate.window()->findChild<QPushButton*>(QStringLiteral("startStopButton"))->click();
}

void scrollToTheMiddle(AppDelegate& delegate) {
  for (int channel = 48; channel < 80; channel += 3)
    matrixOf(delegate).onConnectionToggled(channel, 127 - channel);
  matrixOf(delegate).scrollView->scrollTo({64 * 16 - 269, 64 * 16 - 130});
}

QWidget& part(AppDelegate& delegate, const char* name) {
  return *delegate.window()->findChild<QWidget*>(QString::fromLatin1(name));
}

/// Also waits for work of other threads, such as the panels' file lists.
void settle() {
  QEventLoop loop;
  QTimer::singleShot(300, &loop, &QEventLoop::quit);
  loop.exec();
}

QFileDialog* openPanel() {
  for (QWidget* const widget : QApplication::topLevelWidgets()) {
    auto* const panel = qobject_cast<QFileDialog*>(widget);
    if (panel != nullptr && panel->isVisible()) return panel;
  }
  return nullptr;
}

void startUp(AppDelegate& delegate) {
  delegate.tolvaneVC()->startStopTapped();
}

/// Loads five routes, two of them inactive, and selects an inactive one.
void selectAnInactiveRoute(AppDelegate& delegate) {
  QFile patch(QStringLiteral("monitors.json"));
  if (!patch.open(QIODevice::WriteOnly)) return;
  patch.write(R"([{"inputChannel":0,"outputChannel":0,"gain":1,"active":true},
    {"inputChannel":1,"outputChannel":2,"gain":1,"active":false},
    {"inputChannel":2,"outputChannel":4,"gain":1,"active":true},
    {"inputChannel":3,"outputChannel":6,"gain":0.5,"active":true},
    {"inputChannel":4,"outputChannel":8,"gain":1,"active":false}])");
  patch.close();
  delegate.tolvaneVC()->loadPatch();
  settle();
  QFileDialog* const panel = openPanel();
  panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QFileInfo(patch).absoluteFilePath());
  QMetaObject::invokeMethod(panel, "accept");
  settle();
  auto* const table = delegate.window()->findChild<QTableView*>(QStringLiteral("connectionsTableView"));
  table->selectRow(1);
}

void warn(AppDelegate& delegate) {
  static_cast<QLineEdit&>(part(delegate, "inputChannelField")).setText(QStringLiteral("eight"));
  delegate.tolvaneVC()->addConnection();
}

void moveTheFocusCell(AppDelegate& delegate) {
  matrixOf(delegate).canvas->setFocus(Qt::TabFocusReason);
  matrixOf(delegate).canvas->moveFocusTo({2, 3});
}

void focusTheStartButton(AppDelegate& delegate) {
  delegate.window()->setAttribute(Qt::WA_KeyboardFocusChange);  // as the Tab key does
  part(delegate, "startStopButton").setFocus(Qt::TabFocusReason);
}

void savePatch(AppDelegate& delegate) {
  delegate.tolvaneVC()->savePatch();
}

void loadPatch(AppDelegate& delegate) {
  delegate.tolvaneVC()->loadPatch();
}

std::vector<Scene> scenes() {
  const auto usual = device("Tolvane Virtual Device", {2, 16}, {20});
  return {
      {"start", {usual}, [](AppDelegate&) {}},
      {"running", {usual}, routeAndStart},
      {"no-device", {}, [](AppDelegate&) {}},
      {"128x128", {device("Stage Box", {64, 64}, {64, 64})}, scrollToTheMiddle},
      {"700x500", {usual}, [](AppDelegate& delegate) { delegate.window()->resize(700, 500); }},
      {"table", {usual}, selectAnInactiveRoute},
      {"warning", {usual}, warn},
      {"failed-start", {device("Busy Interface", {18}, {20})}, startUp},
      {"focus-cell", {usual}, moveTheFocusCell, true},
      {"focus-button", {usual}, focusTheStartButton, true},
      {"save-panel", {usual}, savePatch, false, true},
      {"open-panel", {usual}, loadPatch, false, true},
  };
}

QWidget* pictured(const Scene& scene, const AppDelegate& delegate) {
  if (!scene.isOfPanel) return delegate.window();
  return openPanel();
}

bool draw(const Scene& scene, const QString& folder, const QString& scale) {
  ScriptedHal hal;
  hal.devices = scene.devices;
  // The device in the pictures of a failed start refuses to start.
  hal.onCall = [&hal](const std::string& call) {
    if (call.starts_with("AudioDeviceStart(") && hal.devices.front().name == "Busy Interface") {
      hal.answerNext(tolvane::test::HalCall::start, kAudioHardwareNotRunningError);
    }
  };
  AppDelegate delegate;
  delegate.applicationDidFinishLaunching();
  settle();
  scene.prepare(delegate);
  settle();
  QWidget* const focus = QApplication::focusWidget();
  if (focus != nullptr && !scene.keepsFocus && !scene.isOfPanel) focus->clearFocus();
  const QString path =
      QStringLiteral("%1/window-%2@%3x.png").arg(folder, QString::fromLatin1(scene.name), scale);
  QWidget* const picture = pictured(scene, delegate);
  const bool saved = picture != nullptr && picture->grab().save(path);
  std::fprintf(stderr, "%s%s\n", path.toUtf8().constData(), saved ? "" : ": cannot be written");
  delete openPanel();
  delegate.tolvaneVC()->refreshDevices();  // stops the engine
  return saved;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");
  tolvane::applyLook();
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() != 3) {
    std::fputs("usage: screenshot_program FOLDER SCALE\n", stderr);
    return 2;
  }
  bool allSaved = QDir().mkpath(arguments[1]);
  const QString folder = QFileInfo(arguments[1]).absoluteFilePath();
  // The panels show the program's current folder.
  const QTemporaryDir patches;
  if (!QDir::setCurrent(patches.path()) || !QDir().mkdir("Patches") || !QDir::setCurrent("Patches")) return 1;
  for (const Scene& scene : scenes()) allSaved = draw(scene, folder, arguments[2]) && allSaved;
  return allSaved ? 0 : 1;
}
