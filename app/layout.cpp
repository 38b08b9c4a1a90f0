// Builds every control of the window from the layout table and wires it.
#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QMetaMethod>
#include <QScrollArea>

#include "app/announcement.h"
#include "app/connections_table.h"
#include "app/device_menu.h"
#include "app/focus_ring.h"
#include "app/labels.h"
#include "app/layout_table.h"
#include "app/palette.h"
#include "app/push_button.h"
#include "app/required.h"
#include "app/root_view.h"
#include "app/tolvane_view_controller.h"
#include "matrix/calibrated_color.h"
#include "matrix/patch_matrix_view.h"

namespace tolvane {
namespace {

QString textOf(const LayoutRow& row) {
  return QString::fromUtf8(row.text);
}

QFont fontOf(const LayoutRow& row) {
  if (row.font == FontChoice::monospaced) return monospacedFont(row.fontPixels);
  return systemFont(row.fontPixels, row.font == FontChoice::bold);
}

void setColor(QWidget* widget, QPalette::ColorRole role, const QColor& color) {
  QPalette palette = widget->palette();
  palette.setColor(role, color);
  widget->setPalette(palette);
}

QWidget* madeLabel(QLabel* label, const LayoutRow& row) {
  label->setTextFormat(Qt::PlainText);
  label->setText(textOf(row));
  setColor(label, QPalette::WindowText, calibratedWhite(row.white));
  return label;
}

LayerView* makeLayerView(const QColor& background, qreal cornerRadius) {
  auto* const view = new LayerView;
  view->setBackgroundColor(background);
  view->setCornerRadius(cornerRadius);
  return view;
}

QWidget* makeBox(const LayoutRow& row) {
  LayerView* const box = makeLayerView(calibratedWhite(row.white), 6.0);
  box->setBorder(calibratedWhite(0.25), 1.0);
  return box;
}

QWidget* makeTextField(const LayoutRow& row) {
  auto* const field = new QLineEdit(textOf(row));
  field->setPlaceholderText(textOf(row));
  return field;
}

QWidget* makeScrollView() {
  // Only a frame around the table. The table scrolls itself, so its header stays in place.
  auto* const scrollView = new QScrollArea;
  scrollView->setWidgetResizable(true);
  scrollView->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
  scrollView->setFocusPolicy(Qt::NoFocus);
  scrollView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scrollView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  return scrollView;
}

QWidget* makeTableView(const LayoutRow& row) {
  auto* const table = new ConnectionsTableView;
  setColor(table, QPalette::Base, calibratedWhite(row.white));
  return table;
}

/// The widget where the Tab key stops: the control or a part of it. Null if neither takes keys.
QWidget* tabStop(QWidget* control) {
  if (control->focusPolicy() & Qt::TabFocus) return control;
  for (QWidget* const part : control->findChildren<QWidget*>()) {
    if (part->focusPolicy() & Qt::TabFocus) return part;
  }
  return nullptr;
}

}  // namespace

void TolvaneViewController::setupUI() {
  QWidget* previous = nullptr;
  for (const LayoutRow& row : layoutRows()) {
    QWidget* const control = makeControl(row);
    control->setObjectName(QString::fromUtf8(row.name));
    control->setAccessibleName(QString::fromUtf8(row.accessibleName));
    if (row.font != FontChoice::byDefault) control->setFont(fontOf(row));
    if (row.kind == ControlKind::tableView) {
      auto* const scrollView = view_->findChild<QScrollArea*>();
      scrollView->setWidget(control);
      new FocusRing(control, scrollView);
    } else {
      view_->place(control, row.frame);
    }
    if (row.action != nullptr) wire(control, row.action);
    QWidget* const stop = tabStop(control);
    if (stop != nullptr && previous != nullptr) QWidget::setTabOrder(previous, stop);
    if (stop != nullptr) previous = stop;
  }
  adoptControls();
  // On some desktops a screen reader takes the name of a pop-up button only from its label.
  view_->findChild<QLabel*>(QStringLiteral("deviceHeading"))->setBuddy(devicePopup_);
}

QWidget* TolvaneViewController::makeControl(const LayoutRow& row) {
  switch (row.kind) {
    case ControlKind::plainView:
      return makeLayerView(calibratedWhite(row.white), 0.0);
    case ControlKind::statusDot:
      return asNotification(makeLayerView(stoppedColor(), 5.0));
    case ControlKind::label:
      return madeLabel(new QLabel, row);
    case ControlKind::lineLabel:
      return madeLabel(asNotification(new LineLabel), row);
    case ControlKind::textBlock:
      return madeLabel(new TextBlockLabel, row);
    case ControlKind::pushButton:
    case ControlKind::smallButton:
      return new PushButton(textOf(row));
    case ControlKind::popUpButton:
      return new DeviceMenu;
    case ControlKind::textField:
      return makeTextField(row);
    case ControlKind::patchMatrix:
      // Built at its final size: the matrix keeps its corner where it was built.
      return new PatchMatrixView(QRect({}, row.frame.size()));
    case ControlKind::scrollView:
      return makeScrollView();
    case ControlKind::tableView:
      return makeTableView(row);
    case ControlKind::box:
      return makeBox(row);
  }
  fatal("a control of an unknown kind");
}

void TolvaneViewController::adoptControls() {
  const auto adopt = [this](auto& field, const char* name) {
    field = view_->findChild<decltype(field.data())>(QString::fromUtf8(name));
  };
  adopt(devicePopup_, "devicePopup");
  adopt(inputCountLabel_, "inputCountLabel");
  adopt(outputCountLabel_, "outputCountLabel");
  adopt(patchMatrixView_, "patchMatrixView");
  adopt(connectionsTableView_, "connectionsTableView");
  adopt(connectionsScrollView_, "connectionsScrollView");
  adopt(inputChannelField_, "inputChannelField");
  adopt(outputChannelField_, "outputChannelField");
  adopt(gainField_, "gainField");
  adopt(startStopButton_, "startStopButton");
  adopt(statusLabel_, "statusLabel");
  adopt(statusDot_, "statusDot");
  required(patchMatrixView_).onConnectionToggled = [controller = QPointer(this)](std::int64_t input,
                                                                                 std::int64_t output) {
    if (controller) controller->toggleConnection(input, output);
  };
}

void TolvaneViewController::wire(QWidget* control, const char* action) {
  const int slot = metaObject()->indexOfSlot(QByteArray(action) + "()");
  if (slot < 0) fatal("a control names an operation that is not there");
  const bool isPopUp = qobject_cast<DeviceMenu*>(control) != nullptr;
  connect(control,
          isPopUp ? QMetaMethod::fromSignal(&DeviceMenu::activated)
                  : QMetaMethod::fromSignal(&QAbstractButton::clicked),
          this, metaObject()->method(slot));
  control->setProperty("action", QByteArray(action));
}

}  // namespace tolvane
