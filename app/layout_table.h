// Every control of the window, as data.
#pragma once

#include <QRect>
#include <span>

namespace tolvane {

enum class ControlKind {
  plainView,
  statusDot,
  label,
  lineLabel,  // a label whose text may be longer than its frame
  textBlock,
  pushButton,
  smallButton,
  popUpButton,
  textField,
  patchMatrix,
  scrollView,
  tableView,  // goes into the scroll view before it
  box,
};

enum class FontChoice { byDefault, system, bold, monospaced };

/// One control. Fields that its kind does not use keep their defaults.
struct LayoutRow {
  ControlKind kind;
  const char* name;       // object name; also the controller's field name if it has one
  QRect frame;            // lower left corner and size in the root view
  const char* text = "";  // UTF-8; also a text field's placeholder
  FontChoice font = FontChoice::byDefault;
  int fontPixels = 0;
  double white = 0.0;               // grey of the text, or of the background
  const char* action = nullptr;     // the controller's operation that the control calls
  const char* accessibleName = "";  // UTF-8; set if the text alone does not name the control
};

/// All controls in order of creation. This is also the reading order, and the stacking order from back to
/// front.
[[nodiscard]] std::span<const LayoutRow> layoutRows() noexcept;

/// The size of the whole view.
inline constexpr QSize kContentSize{920, 720};

}  // namespace tolvane
