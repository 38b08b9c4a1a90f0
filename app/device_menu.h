#pragma once

#include <QComboBox>
#include <vector>

#include "engine/audio_device_info.h"

namespace tolvane {

/// The device menu. A choice may stop a running engine, so only an entry chosen from the open menu counts.
/// Up, Down, Space, Return and Enter open the menu. While closed it ignores the wheel and all other keys.
/// [main-thread]
class DeviceMenu : public QComboBox {
  Q_OBJECT

 public:
  explicit DeviceMenu(QWidget* parent = nullptr);

  /// Lists these devices, each with its name and channel counts. The first one becomes current. Does not emit
  /// activated().
  void setDevices(const std::vector<AudioDeviceInfo>& devices);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
};

}  // namespace tolvane
