// Time from a click on a cell of the matrix to the publication of the routes for the next cycle.
#include <QApplication>
#include <QComboBox>
#include <QMainWindow>
#include <QMouseEvent>
#include <QPushButton>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>

#include <benchmark/benchmark.h>

#include "app/app_delegate.h"
#include "app/palette.h"
#include "app/tolvane_view_controller.h"
#include "engine/core_audio_engine.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_view.h"

namespace tolvane {
namespace {

using Clock = std::chrono::steady_clock;

/// Watches the live buffer of the running engine on a thread of its own and records when it changes.
class PublicationWatch {
 public:
  PublicationWatch() : thread_([this] { run(); }) {}
  ~PublicationWatch() {
    ended_ = true;
    thread_.join();
  }
  PublicationWatch(const PublicationWatch&) = delete;
  PublicationWatch& operator=(const PublicationWatch&) = delete;

  /// Waits until `count` publications were seen. Returns the time of the last one.
  [[nodiscard]] Clock::time_point timeOf(std::uint64_t count) const {
    while (count_.load(std::memory_order_acquire) < count) std::this_thread::yield();
    return last_;
  }
  [[nodiscard]] std::uint64_t count() const { return count_.load(std::memory_order_acquire); }

 private:
  static std::int32_t liveBuffer() {
    return __atomic_load_n(&CoreAudioEngine::shared().contextPtr()->activeBuf, __ATOMIC_ACQUIRE);
  }

  void run() {
    while (!ended_.load(std::memory_order_relaxed)) {
      const std::int32_t now = liveBuffer();
      if (now == live_) continue;
      last_ = Clock::now();
      live_ = now;
      count_.fetch_add(1, std::memory_order_release);
    }
  }

  std::int32_t live_ = liveBuffer();
  Clock::time_point last_;
  std::atomic<std::uint64_t> count_ = 0;
  std::atomic<bool> ended_ = false;
  std::thread thread_;
};

/// The program's window, running on the last device of the menu, which is the built-in one.
class RunningWindow {
 public:
  RunningWindow() {
    delegate_.applicationDidFinishLaunching();
    auto* const menu = delegate_.window()->findChild<QComboBox*>("devicePopup");
    menu->setCurrentIndex(menu->count() - 1);
    delegate_.tolvaneVC()->deviceSelected();
    delegate_.tolvaneVC()->startStopTapped();
    if (!CoreAudioEngine::shared().isRunning()) throw std::runtime_error("the device does not start");
    canvas_ = delegate_.window()->findChild<PatchMatrixView*>("patchMatrixView")->canvas;
  }
  ~RunningWindow() { CoreAudioEngine::shared().stop(); }
  RunningWindow(const RunningWindow&) = delete;
  RunningWindow& operator=(const RunningWindow&) = delete;

  void click(int row, int column) {
    const QPointF place((column + 0.5) * PatchMatrixView::cellSize, (row + 0.5) * PatchMatrixView::cellSize);
    QMouseEvent press(QEvent::MouseButtonPress, place, canvas_->mapToGlobal(place), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(canvas_, &press);
  }

  [[nodiscard]] TolvaneViewController& controller() { return *delegate_.tolvaneVC(); }

 private:
  AppDelegate delegate_;
  QWidget* canvas_ = nullptr;
};

// Argument: number of routes besides the clicked one.
void clickToPublishedRoutes(benchmark::State& state) {
  RunningWindow window;
  for (int route = 0; route < state.range(0); ++route) window.click(1 + route / 16, route % 16);
  PublicationWatch watch;
  for ([[maybe_unused]] auto cycle : state) {
    const std::uint64_t before = watch.count();
    const auto begin = Clock::now();
    window.click(0, 19);
    state.SetIterationTime(std::chrono::duration<double>(watch.timeOf(before + 1) - begin).count());
    // Draws what this click has changed, so the next measurement does not include it.
    QApplication::processEvents();
  }
}
BENCHMARK(clickToPublishedRoutes)
    ->ArgName("routes")
    ->Arg(0)
    ->Arg(63)
    ->UseManualTime()
    ->Iterations(500)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tolvane

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  QApplication application(argc, argv);
  tolvane::applyLook();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
