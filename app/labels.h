// Two labels for text that does not fit a plain label.
#pragma once

#include <QLabel>

namespace tolvane {

/// A label for one line of any text. Draws line feeds as blanks and elides long text at the end. text() keeps
/// the whole text. The tool tip shows the whole text if the label does not. [main-thread]
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

/// A label for several lines of plain text, from the top. Lines wrap at the width. They move closer if they
/// do not fit the height. [main-thread]
class TextBlockLabel : public QLabel {
  Q_OBJECT

 public:
  using QLabel::QLabel;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace tolvane
