// The status line, and refreshing all that shows the current state.
#include <QLabel>
#include <QMetaObject>
#include <QPushButton>

#include "app/announcement.h"
#include "app/connections_table.h"
#include "app/layer_view.h"
#include "app/palette.h"
#include "app/required.h"
#include "app/tolvane_view_controller.h"
#include "engine/core_audio_engine.h"
#include "matrix/patch_matrix_view.h"

namespace tolvane {
namespace {

/// Rows and columns of the matrix while no device is chosen.
constexpr std::int64_t kChannelsWithoutDevice = 34;

}  // namespace

void TolvaneViewController::refreshUI() {
  required(connectionsTableView_).reloadData(connections_);
  const std::int64_t inputs = selectedDevice_ ? selectedDevice_->inputChannels : kChannelsWithoutDevice;
  const std::int64_t outputs = selectedDevice_ ? selectedDevice_->outputChannels : kChannelsWithoutDevice;
  required(patchMatrixView_).configure(inputs, outputs, connections_);
  if (CoreAudioEngine::shared().isRunning()) return;
  setStatus(QString::number(connections_.size()) +
            QStringLiteral(" connection(s) configured — press Start to route."));
}

void TolvaneViewController::updateStartStopButton() {
  const bool running = CoreAudioEngine::shared().isRunning();
  QPushButton& button = required(startStopButton_);
  button.setText(running ? QStringLiteral("■  Stop") : QStringLiteral("▶  Start"));
  button.setAccessibleName(running ? QStringLiteral("Stop") : QStringLiteral("Start"));
  LayerView& dot = required(statusDot_);
  dot.setBackgroundColor(running ? runningColor() : stoppedColor());
  dot.setAccessibleName(running ? QStringLiteral("Engine running") : QStringLiteral("Engine stopped"));
  announce(dot);
}

void TolvaneViewController::setStatus(const QString& text) {
  // Posted to the label: texts stay in order, and pending ones are dropped with the label.
  QLabel* const label = &required(statusLabel_);
  QMetaObject::invokeMethod(
      label,
      [label, text] {
        label->setText(text);
        announce(*label);
      },
      Qt::QueuedConnection);
}

}  // namespace tolvane
