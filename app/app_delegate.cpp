#include "app/app_delegate.h"

#include <QGuiApplication>
#include <QMainWindow>
#include <QScreen>

#include "app/layout_table.h"
#include "app/tolvane_view_controller.h"

namespace tolvane {
namespace {

constexpr QSize kFirstSize(900, 700);
constexpr QSize kMinimumSize(700, 500);

/// Upper left corner of a window centred on the screen. Never left of or above the screen's own corner.
QPoint centred(QSize size, const QRect& screen) {
  const QPoint middle = screen.center() - QRect({}, size).center();
  return {qMax(middle.x(), screen.x()), qMax(middle.y(), screen.y())};
}

}  // namespace

AppDelegate::AppDelegate() = default;
AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
  const QScreen* const screen = QGuiApplication::primaryScreen();
  if (screen == nullptr) {
    // Qt cannot make a window without a screen.
    QObject::connect(
        qGuiApp, &QGuiApplication::screenAdded, &screenWatch_, [this] { applicationDidFinishLaunching(); },
        Qt::SingleShotConnection);
    return;
  }
  window_ = std::make_unique<QMainWindow>();
  window_->resize(kFirstSize);
  window_->setWindowTitle(QStringLiteral("Tolvane"));
  window_->move(centred(kFirstSize, screen->availableGeometry()));
  window_->setMinimumSize(kMinimumSize);
  tolvaneVC_ = std::make_unique<TolvaneViewController>();
  window_->setCentralWidget(tolvaneVC_->view());
  window_->resize(kContentSize);
  window_->show();
}

}  // namespace tolvane
