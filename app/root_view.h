#pragma once

#include <QPointer>
#include <QRect>
#include <vector>

#include "app/layer_view.h"

namespace tolvane {

/// The whole content of the window. Its origin is the lower left corner. On resize, every control keeps its
/// size and its distance to that corner, so a smaller view cuts off the top and the right. [main-thread]
class RootView : public LayerView {
  Q_OBJECT

 public:
  explicit RootView(QSize size, QWidget* parent = nullptr);

  /// Takes the control as a child and places it. x and y of `frame` are the control's lower left corner,
  /// measured from this view's lower left corner.
  void place(QWidget* control, const QRect& frame);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  struct Placement {
    QPointer<QWidget> control;
    QRect frame;
  };

  void arrange(const Placement& placement) const;

  std::vector<Placement> placements_;
};

}  // namespace tolvane
