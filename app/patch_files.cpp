// Saving and loading patch files through file panels.
#include <QFile>
#include <QFileInfo>

#include "app/patch_panel.h"
#include "app/tolvane_view_controller.h"
#include "core/patch/patch_file.h"

namespace tolvane {
void TolvaneViewController::savePatch() {
  auto* const panel = new PatchPanel(QFileDialog::AcceptSave);
  panel->selectFile(QStringLiteral("mypatch.json"));
  // `this` as the context: nothing is called once the controller is destroyed.
  connect(panel, &QFileDialog::accepted, this,
          [this, panel] { writePatch(panel->selectedFiles().value(0)); });
  panel->show();
}

void TolvaneViewController::loadPatch() {
  auto* const panel = new PatchPanel(QFileDialog::AcceptOpen);
  connect(panel, &QFileDialog::accepted, this, [this, panel] { readPatch(panel->selectedFiles().value(0)); });
  panel->show();
}

void TolvaneViewController::writePatch(const QString& path) {
  if (path.isEmpty()) return;
  const PatchEncodeResult encoded = encodePatch(connections_);
  if (!encoded) return;
  QFile file(path);
  // A failed write is not reported.
  if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
    file.write(encoded.value().data(), static_cast<qint64>(encoded.value().size()));
  }
  setStatus(QStringLiteral("Patch saved → ") + QFileInfo(path).fileName());
}

void TolvaneViewController::readPatch(const QString& path) {
  if (path.isEmpty()) return;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return;
  const QByteArray text = file.readAll();
  if (file.error() != QFileDevice::NoError) return;
  PatchDecodeResult decoded = decodePatch({text.data(), static_cast<std::size_t>(text.size())});
  if (!decoded) return;
  replaceConnections(std::move(decoded).value());
  setStatus(QStringLiteral("Patch loaded: ") + QString::number(connections_.size()) +
            QStringLiteral(" connection(s)"));
}

}  // namespace tolvane
