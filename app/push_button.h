#pragma once

#include <QPushButton>

namespace tolvane {

/// A push button that treats Return and Enter like Space: key down presses it, key up clicks it.
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
