#include "app/application.h"

#include <QApplication>
#include <QTimer>
#include <clocale>

#include "app/app_delegate.h"
#include "app/palette.h"
#include "engine/device_prefetch.h"

namespace tolvane {

int runApplication() {
  // The sound servers answer while Qt connects to the display.
  prefetchDevices();
  // Qt keeps references to both for its lifetime. It gets only our name, no arguments.
  static int argc = 1;
  static char name[] = "tolvane";
  static char* argv[] = {name, nullptr};
  QApplication app(argc, argv);
  // Qt has set the user's locale. Numbers stay in the C locale.
  std::setlocale(LC_NUMERIC, "C");
  QGuiApplication::setDesktopFileName(QStringLiteral("org.tolvane.Tolvane"));
  applyLook();

  AppDelegate delegate;
  QApplication::setQuitOnLastWindowClosed(delegate.applicationShouldTerminateAfterLastWindowClosed());
  QTimer::singleShot(0, &app, [&delegate] { delegate.applicationDidFinishLaunching(); });
  QApplication::exec();
  return 0;
}

}  // namespace tolvane
