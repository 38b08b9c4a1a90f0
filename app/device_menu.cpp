#include "app/device_menu.h"

#include <QKeyEvent>
#include <QWheelEvent>

namespace tolvane {
namespace {

constexpr int kMostEntriesAtOnce = 24;

QString menuTitle(const AudioDeviceInfo& device) {
  return QStringLiteral("%1  (%2 in / %3 out)")
      .arg(QString::fromStdString(device.name), QString::number(device.inputChannels),
           QString::number(device.outputChannels));
}

}  // namespace

DeviceMenu::DeviceMenu(QWidget* parent) : QComboBox(parent) {
  setMaxVisibleItems(kMostEntriesAtOnce);
}

void DeviceMenu::setDevices(const std::vector<AudioDeviceInfo>& devices) {
  clear();
  for (const AudioDeviceInfo& device : devices) addItem(menuTitle(device));
  if (!devices.empty()) setCurrentIndex(0);
}

void DeviceMenu::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      showPopup();
      return;
    default:
      event->ignore();
  }
}

void DeviceMenu::wheelEvent(QWheelEvent* event) {
  event->ignore();
}

}  // namespace tolvane
