#include "app/patch_panel.h"

#include <QApplication>
#include <QFileInfo>
#include <QLineEdit>
#include <QSettings>
#include <QShowEvent>
#include <algorithm>

namespace tolvane {
namespace {

constexpr int kStep = 28;  // points, about the height of a title bar

bool isJson(const QString& path) {
  return path.endsWith(QStringLiteral(".json"), Qt::CaseInsensitive);
}

bool hidesAnother(const QWidget& panel) {
  const QWidgetList windows = QApplication::topLevelWidgets();
  return std::any_of(windows.begin(), windows.end(), [&panel](const QWidget* other) {
    return other != &panel && other->isVisible() && qobject_cast<const PatchPanel*>(other) != nullptr &&
           (other->pos() - panel.pos()).manhattanLength() < kStep;
  });
}

}  // namespace

PatchPanel::PatchPanel(AcceptMode mode) {
  // Qt's panels keep folders and history in a settings file. Nothing can be created under this path, so they
  // neither read nor write one.
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
  setAcceptMode(mode);
  setFileMode(mode == AcceptSave ? AnyFile : ExistingFile);
  setNameFilter(QStringLiteral("JSON (*.json)"));
  setDefaultSuffix(QStringLiteral("json"));
  setModal(false);
  setAttribute(Qt::WA_DeleteOnClose);
  // An open panel does not keep the program running once the window is closed.
  setAttribute(Qt::WA_QuitOnClose, false);
}

void PatchPanel::accept() {
  const QString path = selectedFiles().value(0);
  // The desktop's native panel has no such field and checks the type itself.
  auto* const nameField = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
  if (nameField == nullptr || path.isEmpty() || isJson(path) || QFileInfo(path).isDir()) {
    QFileDialog::accept();
  } else if (acceptMode() == AcceptSave) {
    nameField->setText(path + QStringLiteral(".json"));
    QFileDialog::accept();
  }
}

void PatchPanel::showEvent(QShowEvent* event) {
  QFileDialog::showEvent(event);
  if (event->spontaneous()) return;
  while (hidesAnother(*this)) move(pos() + QPoint(kStep, kStep));
}

}  // namespace tolvane
