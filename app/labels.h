// The two labels whose text does not fit the way a plain label would draw it.
#pragma once

#include <QLabel>

namespace tolvane {

/// A label for one line of any text. Line feeds are drawn as blanks and what is too long ends in an ellipsis;
/// text() keeps the whole, and so does the tool tip when not all of it shows. [main-thread]
class LineLabel : public QLabel {
  Q_OBJECT

 public:
  using QLabel::QLabel;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  [[nodiscard]] QString line() const;
  [[nodiscard]] QString visibleLine() const;
};

/// A label for several lines of plain text, from the top. Lines wrap at the width; when all would not fit the
/// height at the font's own spacing, they move closer. [main-thread]
class TextBlockLabel : public QLabel {
  Q_OBJECT

 public:
  using QLabel::QLabel;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace tolvane
