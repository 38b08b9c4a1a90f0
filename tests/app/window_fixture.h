// The window's content on a scripted HAL, driven by real mouse and key events.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "app/connections_table.h"
#include "app/layer_view.h"
#include "app/tolvane_view_controller.h"
#include "core/patch/patch_connection.h"
#include "core/routing/routing_context.h"
#include "matrix/patch_matrix_view.h"
#include "support/scripted_hal.h"

namespace tolvane {

void PrintTo(const PatchConnection& route, std::ostream* out);

namespace test {

/// Records every text of the status line, in order.
class StatusTrace : public QObject {
 public:
  explicit StatusTrace(QLabel* label);
  /// Returns and clears the texts so far.
  std::vector<std::string> take();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QLabel* label_;
  bool delivering_ = false;
  std::vector<std::string> texts_;
};

[[nodiscard]] ScriptedDevice scriptedDevice(AudioDeviceID id, const std::string& name,
                                            std::vector<UInt32> inputs, std::vector<UInt32> outputs);

/// A route with gain 1.0, active.
[[nodiscard]] PatchConnection plainRoute(std::int64_t input, std::int64_t output);

class WindowTest : public ::testing::Test {
 protected:
  WindowTest();
  ~WindowTest() override;

  /// Builds the controller's view, shows it and waits until it can take events. To be called once; the
  /// devices are those of `hal` at that moment.
  void open();
  /// Does the same as open() and discards the status texts and HAL calls of the start.
  void openQuietly();

  template <class T>
  [[nodiscard]] T& control(const char* name) const {
    T* const found = view->findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return *found;
  }
  /// The button whose property "action" has this value.
  [[nodiscard]] QPushButton& buttonOf(const char* action) const;

  // Real events, through the window system.
  void clickAt(QWidget& widget, QPoint position);
  void press(const char* action);
  void type(const char* field, const std::string& text);
  void clickCell(int row, int column);
  void clickTableRow(int row);
  void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  /// Opens the device menu, moves by this many items and chooses, all by keys.
  void moveDeviceChoice(int steps);

  void addRoute(const std::string& input, const std::string& output, const std::string& gain);

  /// Processes all pending events. Returns and clears the new status texts.
  std::vector<std::string> statusTexts();
  [[nodiscard]] std::string statusText() const;
  [[nodiscard]] std::string text(const char* label) const;
  /// Returns the start and stop calls to the HAL so far. Discards all calls.
  std::vector<std::string> deviceCalls();

  /// The routes that the device would use in its next cycle.
  [[nodiscard]] static std::vector<PatchEntry> publishedEntries();
  [[nodiscard]] const std::vector<PatchConnection>& routes() const { return controller->connections(); }
  [[nodiscard]] std::vector<std::vector<std::string>> tableTexts() const;

  ScriptedHal hal;
  std::unique_ptr<TolvaneViewController> controller;
  QWidget* view = nullptr;
  std::unique_ptr<StatusTrace> trace;
};

}  // namespace test
}  // namespace tolvane
