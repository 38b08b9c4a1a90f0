#pragma once

#include <QPushButton>

namespace tolvane {

/// A push button that Return and Enter work as Space does: pressed with the key, clicked when it is let go.
/// [main-thread]
class PushButton : public QPushButton {
  Q_OBJECT

 public:
  using QPushButton::QPushButton;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
};

}  // namespace tolvane
