#include "app/window_fixture.h"

#include <QApplication>
#include <QTest>
#include <QWindow>
#include <utility>

#include "app/palette.h"
#include "engine/core_audio_engine.h"
#include "matrix/overlay_scroll_view.h"
#include "matrix/patch_matrix_canvas.h"

namespace tolvane {

void PrintTo(const PatchConnection& route, std::ostream* out) {
  *out << route.inputChannel << " to " << route.outputChannel << " gain " << route.gain
       << (route.active ? "" : ", inactive");
}

namespace test {

StatusTrace::StatusTrace(QLabel* label) : label_(label) {
  label->installEventFilter(this);
}

std::vector<std::string> StatusTrace::take() {
  return std::exchange(texts_, {});
}

bool StatusTrace::eventFilter(QObject* watched, QEvent* event) {
  if (delivering_ || event->type() != QEvent::MetaCall) return false;
  // A label does not signal a change of its text. So this delivers the event first and then reads the text.
  delivering_ = true;
  watched->event(event);
  delivering_ = false;
  texts_.push_back(label_->text().toStdString());
  return true;
}

ScriptedDevice scriptedDevice(AudioDeviceID id, const std::string& name, std::vector<UInt32> inputs,
                              std::vector<UInt32> outputs) {
  ScriptedDevice device;
  device.id = id;
  device.name = name;
  device.inputStreams = std::move(inputs);
  device.outputStreams = std::move(outputs);
  return device;
}

PatchConnection plainRoute(std::int64_t input, std::int64_t output) {
  return {input, output, 1.0F, true};
}

WindowTest::WindowTest() {
  hal.devices = {scriptedDevice(7, "Studio Mix", {2, 16}, {20})};
}

WindowTest::~WindowTest() {
  CoreAudioEngine::shared().stop();
}

void WindowTest::open() {
  applyLook();
  controller = std::make_unique<TolvaneViewController>();
  view = controller->view();
  trace = std::make_unique<StatusTrace>(&control<QLabel>("statusLabel"));
  view->show();
  view->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(view));
}

void WindowTest::openQuietly() {
  open();
  statusTexts();
  hal.takeCalls();
}

QPushButton& WindowTest::buttonOf(const char* action) const {
  for (QPushButton* const button : view->findChildren<QPushButton*>()) {
    if (button->property("action").toByteArray() == action) return *button;
  }
  ADD_FAILURE() << "no button for " << action;
  std::abort();
}

void WindowTest::clickAt(QWidget& widget, QPoint position) {
  QTest::mouseClick(view->windowHandle(), Qt::LeftButton, {}, widget.mapTo(view, position));
}

void WindowTest::press(const char* action) {
  QPushButton& button = buttonOf(action);
  clickAt(button, button.rect().center());
}

void WindowTest::key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(view->windowHandle(), key, modifiers);
}

void WindowTest::type(const char* field, const std::string& text) {
  QLineEdit& edit = control<QLineEdit>(field);
  clickAt(edit, edit.rect().center());
  key(Qt::Key_A, Qt::ControlModifier);
  key(Qt::Key_Delete);
  for (const char character : text) QTest::keyClick(view->windowHandle(), character);
  EXPECT_EQ(edit.text().toStdString(), text);
}

void WindowTest::clickCell(int row, int column) {
  constexpr int kCell = static_cast<int>(PatchMatrixView::cellSize);
  auto& matrix = control<PatchMatrixView>("patchMatrixView");
  const QRect cell(column * kCell, row * kCell, kCell, kCell);
  matrix.scrollView->reveal(cell);
  clickAt(*matrix.canvas, cell.center());
}

void WindowTest::clickTableRow(int row) {
  auto& table = control<ConnectionsTableView>("connectionsTableView");
  clickAt(*table.viewport(), table.visualRect(table.model()->index(row, 0)).center());
}

void WindowTest::moveDeviceChoice(int steps) {
  control<QComboBox>("devicePopup").setFocus();
  key(Qt::Key_Space);
  QWidget* const menu = QApplication::activePopupWidget();
  ASSERT_NE(menu, nullptr);
  for (int i = 0; i < steps; ++i) QTest::keyClick(menu->windowHandle(), Qt::Key_Down);
  for (int i = 0; i > steps; --i) QTest::keyClick(menu->windowHandle(), Qt::Key_Up);
  QTest::keyClick(menu->windowHandle(), Qt::Key_Return);
}

void WindowTest::addRoute(const std::string& input, const std::string& output, const std::string& gain) {
  type("inputChannelField", input);
  type("outputChannelField", output);
  type("gainField", gain);
  press("addConnection");
}

std::vector<std::string> WindowTest::statusTexts() {
  QApplication::processEvents();
  return trace->take();
}

std::string WindowTest::statusText() const {
  QApplication::processEvents();
  return text("statusLabel");
}

std::string WindowTest::text(const char* label) const {
  return control<QLabel>(label).text().toStdString();
}

std::vector<std::string> WindowTest::deviceCalls() {
  std::vector<std::string> calls;
  for (const std::string& call : hal.takeCalls()) {
    if (call.starts_with("AudioDevice")) calls.push_back(call);
  }
  return calls;
}

std::vector<PatchEntry> WindowTest::publishedEntries() {
  const IOProcContext* const context = CoreAudioEngine::shared().contextPtr();
  if (context == nullptr) return {};
  const auto& entries = context->activeBuf == 0 ? context->patchesA : context->patchesB;
  return {entries.begin(), entries.begin() + (context->activeBuf == 0 ? context->countA : context->countB)};
}

std::vector<std::vector<std::string>> WindowTest::tableTexts() const {
  const QAbstractItemModel& model = *control<ConnectionsTableView>("connectionsTableView").model();
  std::vector<std::vector<std::string>> rows;
  for (int row = 0; row < model.rowCount(); ++row) {
    auto& texts = rows.emplace_back();
    for (int column = 0; column < model.columnCount(); ++column) {
      texts.push_back(model.index(row, column).data().toString().toStdString());
    }
  }
  return rows;
}

}  // namespace test
}  // namespace tolvane
