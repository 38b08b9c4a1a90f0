// Draws the window in five states into PNG files, on devices of its own making. Usage: FOLDER SCALE
// (the scale only names the files; QT_SCALE_FACTOR sets it).
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QMainWindow>
#include <QPushButton>
#include <clocale>
#include <cstdio>
#include <functional>
#include <string>

#include "app/app_delegate.h"
#include "app/palette.h"
#include "app/tolvane_view_controller.h"
#include "matrix/overlay_scroll_view.h"
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

/// Twelve routes, as a monitoring patch has them: two pairs straight through, the rest spread.
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

std::vector<Scene> scenes() {
  const auto usual = device("Tolvane Virtual Device", {2, 16}, {20});
  return {
      {"start", {usual}, [](AppDelegate&) {}},
      {"running", {usual}, routeAndStart},
      {"no-device", {}, [](AppDelegate&) {}},
      {"128x128", {device("Stage Box", {64, 64}, {64, 64})}, scrollToTheMiddle},
      {"700x500", {usual}, [](AppDelegate& delegate) { delegate.window()->resize(700, 500); }},
  };
}

bool draw(const Scene& scene, const QString& folder, const QString& scale) {
  ScriptedHal hal;
  hal.devices = scene.devices;
  AppDelegate delegate;
  delegate.applicationDidFinishLaunching();
  scene.prepare(delegate);
  for (int i = 0; i < 20; ++i) QApplication::processEvents();
  if (QWidget* const focus = QApplication::focusWidget()) focus->clearFocus();
  const QString path =
      QStringLiteral("%1/window-%2@%3x.png").arg(folder, QString::fromLatin1(scene.name), scale);
  const bool saved = delegate.window()->grab().save(path);
  std::fprintf(stderr, "%s%s\n", path.toUtf8().constData(), saved ? "" : ": cannot be written");
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
  for (const Scene& scene : scenes()) allSaved = draw(scene, arguments[1], arguments[2]) && allSaved;
  return allSaved ? 0 : 1;
}
