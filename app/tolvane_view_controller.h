#pragma once

#include <QObject>
#include <QPointer>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/patch/patch_connection.h"
#include "engine/audio_device_info.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;

namespace tolvane {

class ConnectionsTableView;
class DeviceMenu;
class LayerView;
class PatchMatrixView;
class RootView;
struct LayoutRow;

/// Owns the device list, the selected device and the route list. Handles every control and drives
/// CoreAudioEngine::shared(). Table, matrix, engine and patch file all follow the route list. A change is
/// published to the engine if it runs, then shown.
///
/// Everything is [main-thread] except setStatus. An operation that needs a control ends the process before
/// view() is called and after the view is destroyed.
class TolvaneViewController : public QObject {
  Q_OBJECT

 public:
  explicit TolvaneViewController(QObject* parent = nullptr);
  /// Deletes its view. Leaves the engine as it is.
  ~TolvaneViewController() override;

  /// The content of the window, 920 x 720. The first call builds it and fills in the device list. Controls
  /// have the names of the fields below as object names. Their property "action" is the name of the operation
  /// that they call.
  QWidget* view();

  /// In menu order.
  [[nodiscard]] const std::vector<AudioDeviceInfo>& devices() const noexcept { return devices_; }
  /// The device that Start will use.
  [[nodiscard]] const std::optional<AudioDeviceInfo>& selectedDevice() const noexcept {
    return selectedDevice_;
  }
  /// In order of addition.
  [[nodiscard]] const std::vector<PatchConnection>& connections() const noexcept { return connections_; }

  /// Posts the text to the status line on the main thread. Texts appear in order of the calls. [not-io]
  void setStatus(const QString& text);

 public Q_SLOTS:
  /// Stops the engine, lists the devices again and selects the first one. If there is none, the old selection
  /// stays.
  void refreshDevices();
  /// Selects the device chosen in the menu. Stops the engine and keeps the routes.
  void deviceSelected();
  void addConnection();
  void removeConnection();
  void clearConnections();
  void presetStereoToHeadphones();
  void presetThru12();
  void startStopTapped();
  /// Both open a panel and return at once. The file is written or read when the user confirms the panel.
  void savePatch();
  void loadPatch();

 private:
  // Layout.
  void loadView();
  void setupUI();
  QWidget* makeControl(const LayoutRow& row);
  void adoptControls();
  void wire(QWidget* control, const char* action);

  // Route editing.
  void toggleConnection(std::int64_t input, std::int64_t output);
  void replaceConnections(std::vector<PatchConnection> connections);
  void connectionsChanged();
  void pushConnectionsToEngine();
  [[nodiscard]] std::int64_t activeConnectionCount() const;

  // Devices, start and stop.
  void stopEngineIfRunning();

  // Status and refresh.
  void refreshUI();
  void updateStartStopButton();

  // Patch files.
  void writePatch(const QString& path);
  void readPatch(const QString& path);

  QPointer<RootView> view_;
  QPointer<DeviceMenu> devicePopup_;
  QPointer<QLabel> inputCountLabel_;
  QPointer<QLabel> outputCountLabel_;
  QPointer<PatchMatrixView> patchMatrixView_;
  QPointer<ConnectionsTableView> connectionsTableView_;
  QPointer<QScrollArea> connectionsScrollView_;
  QPointer<QLineEdit> inputChannelField_;
  QPointer<QLineEdit> outputChannelField_;
  QPointer<QLineEdit> gainField_;
  QPointer<QPushButton> startStopButton_;
  QPointer<QLabel> statusLabel_;
  QPointer<LayerView> statusDot_;
  std::vector<AudioDeviceInfo> devices_;
  std::optional<AudioDeviceInfo> selectedDevice_;
  std::vector<PatchConnection> connections_;
};

}  // namespace tolvane
