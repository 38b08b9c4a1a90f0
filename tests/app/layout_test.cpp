// Compares every control of the window with a list of our own.
#include <QFontDatabase>
#include <QHeaderView>
#include <QScrollArea>
#include <cmath>
#include <optional>

#include "app/labels.h"
#include "app/layout_table.h"
#include "app/window_fixture.h"

namespace tolvane::test {
namespace {

struct Expected {
  const char* className;
  const char* field;  // object name, for the controls that the controller keeps
  int x, y, width, height;
  const char* text = "";
  int fontPixels = 0;   // 0: no font of its own
  char fontKind = 's';  // system, bold, mono
  double white = -1.0;
  const char* action = nullptr;
};

constexpr const char* kLabel = "QLabel";
constexpr const char* kLine = "tolvane::LineLabel";
constexpr const char* kBlock = "tolvane::TextBlockLabel";
constexpr const char* kView = "tolvane::LayerView";
constexpr const char* kButton = "tolvane::PushButton";
constexpr const char* kField = "QLineEdit";

constexpr const char* kExplanation =
    R"(The app registers a HAL IOProc directly with Core Audio — the same low-level mechanism your DAW uses.
No added latency beyond the device buffer size. Changes to the patch table take effect immediately (hot-swap, no restart).

SETUP:
  1. In Audio MIDI Setup, create an Aggregate Device combining your audio interfaces (set clock source and sample rate).
  2. Select that Aggregate Device in the dropdown above.
  3. Click cells in the Patch Matrix (or use Add Connection) to define your routes.
  4. Press ▶ Start. Done — audio is flowing.

PERMISSIONS:  First launch → System Settings → Privacy & Security → Microphone → enable this app.
SAMPLE RATE:  The Aggregate Device must be running when you start. Match your DAW session sample rate.
CHANNELS:     Supports any Core Audio device — 2 to 128+ channels. All available channels are shown in the matrix.
HOT CHANGES:  Add/remove connections while running — changes apply within one buffer cycle with no clicks or dropouts.)";

// In order of creation. The table view is inside the scroll view before it and has no frame of its own.
const std::vector<Expected> kControls{
    {kView, nullptr, 0, 685, 920, 35, "", 0, 's', 0.08},
    {kLabel, nullptr, 18, 693, 300, 20, "TOLVANE", 15, 'b', 1.0},
    {kLabel, nullptr, 320, 696, 420, 14, "Core Audio HAL Channel Router  •  real-time, zero-latency", 10, 's',
     0.45},
    {kView, "statusDot", 820, 697, 10, 10},
    {kButton, "startStopButton", 836, 689, 72, 26, "▶  Start", 0, 's', -1.0, "startStopTapped"},
    {kLabel, nullptr, 18, 660, 140, 14, "AUDIO DEVICE", 9, 'b', 0.42},
    {"tolvane::DeviceMenu", "devicePopup", 18, 636, 400, 24, "", 0, 's', -1.0, "deviceSelected"},
    {kButton, nullptr, 426, 636, 84, 24, "↺ Refresh", 11, 's', -1.0, "refreshDevices"},
    {kLabel, "inputCountLabel", 524, 640, 130, 16, "Inputs: —", 10, 's', 0.55},
    {kLabel, "outputCountLabel", 666, 640, 130, 16, "Outputs: —", 10, 's', 0.55},
    {kLabel, nullptr, 18, 614, 400, 14, "PATCH MATRIX   (click cell = toggle route)", 9, 'b', 0.42},
    {kLabel, nullptr, 340, 614, 380, 14, "IN ↓ rows   OUT → columns     🟢 = active route", 9, 's',
     0.4},
    {"tolvane::PatchMatrixView", "patchMatrixView", 18, 310, 576, 298},
    {kLabel, nullptr, 610, 614, 280, 14, "ACTIVE CONNECTIONS", 9, 'b', 0.42},
    {"QScrollArea", "connectionsScrollView", 610, 310, 292, 298},
    {kLabel, nullptr, 18, 285, 200, 14, "ADD CONNECTION", 9, 'b', 0.42},
    {kLabel, nullptr, 18, 260, 22, 20, "In:", 10, 's', 0.65},
    {kField, "inputChannelField", 42, 258, 42, 22, "1"},
    {kLabel, nullptr, 92, 260, 28, 20, "Out:", 10, 's', 0.65},
    {kField, "outputChannelField", 122, 258, 42, 22, "33"},
    {kLabel, nullptr, 172, 260, 34, 20, "Gain:", 10, 's', 0.65},
    {kField, "gainField", 208, 258, 40, 22, "1.0"},
    {kButton, nullptr, 256, 256, 54, 26, "Add", 11, 's', -1.0, "addConnection"},
    {kButton, nullptr, 318, 256, 66, 26, "Remove", 11, 's', -1.0, "removeConnection"},
    {kButton, nullptr, 392, 256, 54, 26, "Clear", 11, 's', -1.0, "clearConnections"},
    {kLabel, nullptr, 610, 285, 200, 14, "QUICK PATCH", 9, 'b', 0.42},
    {kButton, nullptr, 610, 256, 160, 26, "In 1,2 → Last 2 Outs", 11, 's', -1.0, "presetStereoToHeadphones"},
    {kButton, nullptr, 778, 256, 124, 26, "In 1→1, 2→2 (thru)", 11, 's', -1.0, "presetThru12"},
    {kView, nullptr, 18, 56, 884, 192, "", 0, 's', 0.155},
    {kLabel, nullptr, 30, 224, 200, 14, "HOW IT WORKS", 9, 'b', 0.42},
    {kBlock, nullptr, 30, 70, 862, 156, kExplanation, 10, 'm', 0.58},
    {kView, nullptr, 0, 0, 920, 56, "", 0, 's', 0.08},
    {kButton, nullptr, 18, 16, 110, 26, "💾 Save Patch", 11, 's', -1.0, "savePatch"},
    {kButton, nullptr, 136, 16, 110, 26, "📂 Load Patch", 11, 's', -1.0, "loadPatch"},
    {kLine, "statusLabel", 260, 21, 600, 16, "Ready — select a device and press Start.", 10, 's', 0.52},
};

QColor greyOf(double white) {
  const auto level = static_cast<int>(std::lround(white * 255.0));
  return {level, level, level};
}

QString textOf(const QWidget& widget) {
  if (const auto* const label = qobject_cast<const QLabel*>(&widget)) return label->text();
  if (const auto* const button = qobject_cast<const QPushButton*>(&widget)) return button->text();
  if (const auto* const field = qobject_cast<const QLineEdit*>(&widget)) return field->text();
  return {};
}

std::optional<QColor> colorOf(const QWidget& widget) {
  if (const auto* const layer = qobject_cast<const LayerView*>(&widget)) return layer->backgroundColor();
  if (qobject_cast<const QLabel*>(&widget) != nullptr) return widget.palette().color(QPalette::WindowText);
  return std::nullopt;
}

class LayoutTest : public WindowTest {
 protected:
  LayoutTest() {
    hal.devices.clear();  // keeps the texts of the layout
    open();
    controls = view->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
  }

  QList<QWidget*> controls;
};

TEST_F(LayoutTest, TheViewIs920By720OnDarkGrey) {
  EXPECT_EQ(view->size(), QSize(920, 720));
  EXPECT_EQ(control<LayerView>("topBar").parentWidget(), view);
  const QImage image = view->grab().toImage();
  EXPECT_EQ(image.pixelColor((QPointF(5, 100) * image.devicePixelRatio()).toPoint()), greyOf(0.11));
}

TEST_F(LayoutTest, HasTheseControlsInThisOrder) {
  ASSERT_EQ(static_cast<std::size_t>(controls.size()), kControls.size());
  for (std::size_t i = 0; i < kControls.size(); ++i) {
    const QWidget& widget = *controls.at(static_cast<int>(i));
    const Expected& expected = kControls[i];
    SCOPED_TRACE(testing::Message() << "control " << i + 1 << ' ' << expected.text);
    EXPECT_STREQ(widget.metaObject()->className(), expected.className);
    EXPECT_EQ(textOf(widget), QString::fromUtf8(expected.text));
    EXPECT_EQ(widget.geometry(),
              QRect(expected.x, 720 - expected.y - expected.height, expected.width, expected.height));
    EXPECT_TRUE(widget.isVisible());
    if (expected.field != nullptr) {
      EXPECT_EQ(widget.objectName(), expected.field);
    }
  }
}

TEST_F(LayoutTest, FontsAreThoseOfTheList) {
  for (std::size_t i = 0; i < kControls.size(); ++i) {
    const QWidget& widget = *controls.at(static_cast<int>(i));
    const Expected& expected = kControls[i];
    SCOPED_TRACE(expected.text);
    if (expected.fontPixels == 0) {
      EXPECT_FALSE(widget.testAttribute(Qt::WA_SetFont)) << "has no font of its own";
      continue;
    }
    EXPECT_EQ(widget.font().pixelSize(), expected.fontPixels);
    EXPECT_EQ(widget.font().bold(), expected.fontKind == 'b');
    const auto family = expected.fontKind == 'm' ? QFontDatabase::FixedFont : QFontDatabase::GeneralFont;
    EXPECT_EQ(widget.font().family(), QFontDatabase::systemFont(family).family());
  }
}

TEST_F(LayoutTest, ColoursAreThoseOfTheList) {
  for (std::size_t i = 0; i < kControls.size(); ++i) {
    if (kControls[i].white < 0) continue;
    EXPECT_EQ(colorOf(*controls.at(static_cast<int>(i))), greyOf(kControls[i].white)) << kControls[i].text;
  }
  EXPECT_EQ(control<LayerView>("statusDot").backgroundColor(), QColor(204, 51, 51));
  EXPECT_EQ(control<LayerView>("statusDot").cornerRadius(), 5.0);
  const auto& box = control<LayerView>("informationBox");
  EXPECT_EQ(box.borderColor(), greyOf(0.25));
  EXPECT_EQ(box.borderWidth(), 1.0);
  EXPECT_EQ(box.cornerRadius(), 6.0);
}

TEST_F(LayoutTest, EachControlCallsItsOperationOfTheControllerAndNothingElse) {
  for (std::size_t i = 0; i < kControls.size(); ++i) {
    QWidget* const widget = controls.at(static_cast<int>(i));
    const char* const action = kControls[i].action;
    SCOPED_TRACE(kControls[i].text);
    if (action == nullptr) {
      EXPECT_FALSE(widget->property("action").isValid());
      continue;
    }
    EXPECT_EQ(widget->property("action").toByteArray(), action);
    // disconnect() succeeds only if the connection exists. Afterwards no connection to the controller is
    // left.
    const bool isPopUp = qobject_cast<QComboBox*>(widget) != nullptr;
    EXPECT_TRUE(QObject::disconnect(widget, isPopUp ? SIGNAL(activated(int)) : SIGNAL(clicked(bool)),
                                    controller.get(), ("1" + QByteArray(action) + "()").constData()));
    EXPECT_FALSE(QObject::disconnect(widget, nullptr, controller.get(), nullptr));
  }
}

TEST_F(LayoutTest, FieldsCanBeEditedAndShowTheirFirstValueWhenEmpty) {
  for (const char* const name : {"inputChannelField", "outputChannelField", "gainField"}) {
    const auto& field = control<QLineEdit>(name);
    EXPECT_FALSE(field.isReadOnly());
    EXPECT_EQ(field.placeholderText(), field.text());
  }
}

TEST_F(LayoutTest, LabelsTakeTheirTextsLiterally) {
  for (const QLabel* const label : view->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
    EXPECT_EQ(label->textFormat(), Qt::PlainText) << label->text().toStdString();
    EXPECT_EQ(label->textInteractionFlags() & Qt::TextEditable, 0) << label->text().toStdString();
  }
}

TEST_F(LayoutTest, TheTableStandsInTheScrollView) {
  auto& scrollView = control<QScrollArea>("connectionsScrollView");
  auto& table = control<ConnectionsTableView>("connectionsTableView");
  EXPECT_EQ(scrollView.widget(), &table);
  EXPECT_EQ(scrollView.frameShadow(), QFrame::Sunken);
  EXPECT_EQ(table.size(), scrollView.viewport()->size());
  EXPECT_EQ(table.verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
  EXPECT_EQ(table.palette().color(QPalette::Base), greyOf(0.14));
  EXPECT_EQ(table.gridColor(), greyOf(0.22));
  EXPECT_EQ(table.selectionBehavior(), QAbstractItemView::SelectRows);
  EXPECT_EQ(table.selectionMode(), QAbstractItemView::SingleSelection);
}

TEST_F(LayoutTest, TheTableHasTheseFourColumns) {
  struct Column {
    const char* identifier;
    const char* title;
    int width;
  };
  constexpr Column kColumns[]{
      {"input", "In Ch", 52}, {"output", "Out Ch", 52}, {"gain", "Gain", 46}, {"active", "On", 34}};
  auto& table = control<ConnectionsTableView>("connectionsTableView");
  ASSERT_EQ(table.model()->columnCount(), 4);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(table.model()->headerData(i, Qt::Horizontal, ConnectionsTableModel::kIdentifierRole).toString(),
              kColumns[i].identifier);
    EXPECT_EQ(table.model()->headerData(i, Qt::Horizontal).toString(), kColumns[i].title);
    EXPECT_EQ(table.columnWidth(i), kColumns[i].width);
    EXPECT_EQ(table.horizontalHeader()->visualIndex(i), i);
  }
  EXPECT_TRUE(table.horizontalHeader()->isVisible());
  EXPECT_FALSE(table.verticalHeader()->isVisible());
}

TEST_F(LayoutTest, NothingCoversWhatCanBeClicked) {
  for (QWidget* const widget : controls) {
    if (!widget->property("action").isValid() && qobject_cast<QLineEdit*>(widget) == nullptr) continue;
    for (const QPoint corner :
         {widget->rect().center(), widget->rect().topLeft(), widget->rect().bottomRight()}) {
      EXPECT_EQ(view->childAt(widget->mapTo(view, corner)), widget) << textOf(*widget).toStdString();
    }
  }
}

TEST_F(LayoutTest, TheViewIsBuiltOnce) {
  EXPECT_EQ(controller->view(), view);
  EXPECT_EQ(view->findChildren<QComboBox*>().size(), 1);
}

TEST_F(LayoutTest, WithoutADeviceARefreshShowsTheStandInGrid) {
  const auto& matrix = control<PatchMatrixView>("patchMatrixView");
  clickCell(0, 0);
  EXPECT_EQ(matrix.inputCount, 34);
  EXPECT_EQ(matrix.outputCount, 34);
}

}  // namespace
}  // namespace tolvane::test
