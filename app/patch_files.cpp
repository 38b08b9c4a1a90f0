// Saving and loading patch files through file panels.
#include <QFileInfo>

#include "app/patch_panel.h"
#include "app/patch_storage.h"
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
  writePatchText(path, encoded.value());  // a failed write is not reported
  setStatus(QStringLiteral("Patch saved → ") + QFileInfo(path).fileName());
}

void TolvaneViewController::readPatch(const QString& path) {
  if (path.isEmpty()) return;
  const std::optional<std::string> text = readPatchText(path);
  if (!text) return;
  PatchDecodeResult decoded = decodePatch(*text);
  if (!decoded) return;
  replaceConnections(std::move(decoded).value());
  setStatus(QStringLiteral("Patch loaded: ") + QString::number(connections_.size()) +
            QStringLiteral(" connection(s)"));
}

}  // namespace tolvane
