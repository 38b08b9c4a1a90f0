// The panel where the user names a patch file.
#pragma once

#include <QFileDialog>

namespace tolvane {

/// A panel for JSON files only, not modal. Deletes itself when closed. Opens offset from other open panels.
/// Leaves no settings or history on the disk. [main-thread]
class PatchPanel : public QFileDialog {
  Q_OBJECT

 public:
  explicit PatchPanel(AcceptMode mode);

 protected:
  /// When saving, appends ".json" to a name of another type. When opening, refuses a file of another type.
  void accept() override;
  void showEvent(QShowEvent* event) override;
};

}  // namespace tolvane
