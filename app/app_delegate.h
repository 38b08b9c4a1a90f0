#pragma once

#include <QObject>
#include <memory>

class QMainWindow;

namespace tolvane {

class TolvaneViewController;

/// Opens the one window and puts the controller into it. It starts and stops no audio. [main-thread]
class AppDelegate {
 public:
  AppDelegate();
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  /// Makes the window and shows it; while there is no screen, as soon as there is one. To be called once,
  /// when the application runs.
  void applicationDidFinishLaunching();

  /// Always: closing the window quits.
  [[nodiscard]] bool applicationShouldTerminateAfterLastWindowClosed() const noexcept { return true; }

  /// Both null until launching has finished.
  [[nodiscard]] QMainWindow* window() const noexcept { return window_.get(); }
  [[nodiscard]] TolvaneViewController* tolvaneVC() const noexcept { return tolvaneVC_.get(); }

 private:
  QObject screenWatch_;  // waits for the first screen
  std::unique_ptr<QMainWindow> window_;
  std::unique_ptr<TolvaneViewController> tolvaneVC_;  // goes first, and takes its view out of the window
};

}  // namespace tolvane
