#pragma once

#include <QObject>
#include <QPointer>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/patch_connection.h"
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

/// Owns the device list, the selected device and the route list, reacts to every control and drives
/// CoreAudioEngine::shared(). The route list is the one truth for table, matrix, engine and patch file: each
/// change of it is published to the engine while that runs, then shown.
///
/// Everything is [main-thread] but setStatus. Asking for a control before view() was called, or after it was
/// destroyed, ends the process.
class TolvaneViewController : public QObject {
  Q_OBJECT

 public:
  explicit TolvaneViewController(QObject* parent = nullptr);
  /// Takes its view along. The engine is left as it is.
  ~TolvaneViewController() override;

  /// The content of the window, 920 x 720, built and filled with the device list on the first call. The
  /// controls in it carry the names of the fields below as object names, and the name of the operation that
  /// they call as the property "action".
  QWidget* view();

  /// In menu order.
  [[nodiscard]] const std::vector<AudioDeviceInfo>& devices() const noexcept { return devices_; }
  /// What Start will use.
  [[nodiscard]] const std::optional<AudioDeviceInfo>& selectedDevice() const noexcept {
    return selectedDevice_;
  }
  /// In the order in which they were added.
  [[nodiscard]] const std::vector<PatchConnection>& connections() const noexcept { return connections_; }

  /// Shows the text in the status line, later, on the main thread; texts come in the order of the calls.
  /// [not-io]
  void setStatus(const QString& text);

 public Q_SLOTS:
  /// Stops the engine, asks for the devices anew and adopts the first one. With none, the old one stays.
  void refreshDevices();
  /// Adopts the device chosen in the menu: stops the engine, keeps the routes.
  void deviceSelected();
  void addConnection();
  void removeConnection();
  void clearConnections();
  void presetStereoToHeadphones();
  void presetThru12();
  void startStopTapped();
  /// Both return at once; their panel does the rest when it is confirmed.
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
