// The panel in which the user names a patch file.
#pragma once

#include <QFileDialog>

namespace tolvane {

/// A panel that stands free beside the window, for JSON files alone; it deletes itself when it is closed. It
/// opens a little off any other that is open, and leaves nothing on the disk. [main-thread]
class PatchPanel : public QFileDialog {
  Q_OBJECT

 public:
  explicit PatchPanel(AcceptMode mode);

 protected:
  /// Saving, a name of another type gets the suffix as well; opening, a file of another type is not taken.
  void accept() override;
  void showEvent(QShowEvent* event) override;
};

}  // namespace tolvane
