#pragma once

#include <QObject>
#include <memory>

class QMainWindow;

namespace tolvane {

class TolvaneViewController;

/// Opens the only window and puts the controller's view into it. Does not start or stop audio. [main-thread]
class AppDelegate {
 public:
  AppDelegate();
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  /// Makes and shows the window. Without a screen, does so when the first one arrives. Call once, when the
  /// application runs.
  void applicationDidFinishLaunching();

  /// Always true: closing the window quits.
  [[nodiscard]] bool applicationShouldTerminateAfterLastWindowClosed() const noexcept { return true; }

  /// Both are null until launching has finished.
  [[nodiscard]] QMainWindow* window() const noexcept { return window_.get(); }
  [[nodiscard]] TolvaneViewController* tolvaneVC() const noexcept { return tolvaneVC_.get(); }

 private:
  QObject screenWatch_;  // waits for the first screen
  std::unique_ptr<QMainWindow> window_;
  std::unique_ptr<TolvaneViewController> tolvaneVC_;  // destroyed before the window; deletes its view
};

}  // namespace tolvane
