// Cost of repainting the visible matrix by number of channels. The painted area is always the same.
#include <QApplication>
#include <QImage>

#include <benchmark/benchmark.h>

#include "matrix/patch_matrix_view.h"

namespace tolvane {
namespace {

constexpr int kInputs = 18;
constexpr int kOutputs = 20;

// The size of 18 × 20 cells and the two strips. Every larger matrix fills the same area.
QSize areaOfTheSmallest() {
  return {static_cast<int>(PatchMatrixView::labelW + kOutputs * PatchMatrixView::cellSize),
          static_cast<int>(PatchMatrixView::labelH + kInputs * PatchMatrixView::cellSize)};
}

std::vector<PatchConnection> someRoutes(std::int64_t inputs, std::int64_t outputs) {
  std::vector<PatchConnection> routes;
  for (std::int64_t route = 0; route < 64; ++route) {
    routes.push_back({(route * 5) % inputs, (route * 7) % outputs, 1.0F, true});
  }
  return routes;
}

// Arguments: inputs, outputs, display scale in hundredths.
void repaintVisibleMatrix(benchmark::State& state) {
  const auto inputs = state.range(0);
  const auto outputs = state.range(1);
  const double scale = static_cast<double>(state.range(2)) / 100.0;
  PatchMatrixView view(QRect(QPoint(0, 0), areaOfTheSmallest()));
  view.configure(inputs, outputs, someRoutes(inputs, outputs));
  QImage display(view.size() * scale, QImage::Format_ARGB32_Premultiplied);
  display.setDevicePixelRatio(scale);
  for ([[maybe_unused]] auto cycle : state) {
    view.render(&display);
    benchmark::DoNotOptimize(display.constBits());
  }
}
BENCHMARK(repaintVisibleMatrix)
    ->ArgNames({"inputs", "outputs", "hundredths"})
    ->Args({18, 20, 100})
    ->Args({128, 128, 100})
    ->Args({1024, 1024, 100})
    ->Args({18, 20, 200})
    ->Args({128, 128, 200})
    ->Args({1024, 1024, 200})
    ->Args({18, 20, 150})
    ->Args({1024, 1024, 150})
    ->Args({1024, 1024, 110})
    ->Args({1024, 1024, 125})
    ->Args({1024, 1024, 175})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tolvane

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  QApplication application(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
