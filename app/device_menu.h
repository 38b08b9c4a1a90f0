#pragma once

#include <QComboBox>
#include <vector>

#include "engine/audio_device_info.h"

namespace tolvane {

/// The menu of the devices. A choice may stop a running engine, so that only an entry chosen from the opened
/// menu counts: Up, Down, Space and Enter open it, and the wheel and all other keys do nothing to it while it
/// is closed. [main-thread]
class DeviceMenu : public QComboBox {
  Q_OBJECT

 public:
  explicit DeviceMenu(QWidget* parent = nullptr);

  /// Lists these devices, each with its name and channel counts, and shows the first as the current one.
  /// Emits no activated().
  void setDevices(const std::vector<AudioDeviceInfo>& devices);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
};

}  // namespace tolvane
