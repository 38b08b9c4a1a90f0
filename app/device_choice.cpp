// Choice of the device; start and stop.
#include <QLabel>

#include "app/device_menu.h"
#include "app/required.h"
#include "app/tolvane_view_controller.h"
#include "engine/core_audio_engine.h"
#include "engine/device_text.h"
#include "matrix/patch_matrix_view.h"

namespace tolvane {

void TolvaneViewController::stopEngineIfRunning() {
  CoreAudioEngine& engine = CoreAudioEngine::shared();
  if (!engine.isRunning()) return;
  engine.stop();
  updateStartStopButton();
}

void TolvaneViewController::refreshDevices() {
  stopEngineIfRunning();
  devices_ = CoreAudioEngine::shared().getAllDevices();
  required(devicePopup_).setDevices(devices_);
  deviceSelected();
}

void TolvaneViewController::deviceSelected() {
  const int index = required(devicePopup_).currentIndex();
  if (index < 0 || static_cast<std::size_t>(index) >= devices_.size()) return;
  stopEngineIfRunning();
  const AudioDeviceInfo& device = selectedDevice_.emplace(devices_[static_cast<std::size_t>(index)]);
  required(inputCountLabel_).setText(QStringLiteral("Inputs: ") + QString::number(device.inputChannels));
  required(outputCountLabel_).setText(QStringLiteral("Outputs: ") + QString::number(device.outputChannels));
  const auto namer = [id = device.id](bool isInput) -> ChannelNamer {
    return [=](std::int64_t channel) {
      return QString::fromStdString(channelName(id, isInput, channel).value_or(""));
    };
  };
  required(patchMatrixView_).setChannelNames(namer(true), namer(false));
  required(patchMatrixView_).configure(device.inputChannels, device.outputChannels, connections_);
  setStatus(QStringLiteral("Device: ") + QString::fromStdString(device.name) +
            QStringLiteral(" — configure patch then press Start."));
}

void TolvaneViewController::startStopTapped() {
  CoreAudioEngine& engine = CoreAudioEngine::shared();
  if (engine.isRunning()) {
    stopEngineIfRunning();
    setStatus(QStringLiteral("Stopped."));
    return;
  }
  if (!selectedDevice_) {
    setStatus(QStringLiteral("⚠️  Select a device first."));
    return;
  }
  if (const auto error = engine.start(selectedDevice_->id, connections_)) {
    setStatus(QStringLiteral("❌  ") + QString::fromStdString(error->errorDescription()));
    return;
  }
  updateStartStopButton();
  setStatus(QStringLiteral("● Running on ") + QString::fromStdString(selectedDevice_->name) +
            QStringLiteral("  •  ") + QString::number(activeConnectionCount()) +
            QStringLiteral(" active route(s)"));
}

}  // namespace tolvane
