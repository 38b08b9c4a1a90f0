#include "app/tolvane_view_controller.h"

#include "app/connections_table.h"
#include "app/layout_table.h"
#include "app/root_view.h"
#include "matrix/calibrated_color.h"
#include "matrix/patch_matrix_view.h"

namespace tolvane {

TolvaneViewController::TolvaneViewController(QObject* parent) : QObject(parent) {}

TolvaneViewController::~TolvaneViewController() {
  delete view_.data();
}

QWidget* TolvaneViewController::view() {
  if (view_.isNull()) loadView();
  return view_;
}

void TolvaneViewController::loadView() {
  view_ = new RootView(kContentSize);
  view_->setBackgroundColor(calibratedWhite(0.11));
  setupUI();
  refreshDevices();
}

}  // namespace tolvane
