#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPointF>
#include <cstdint>

namespace tolvane {

/// Look of a channel number in a header strip.
struct LabelStyle {
  QFont font;
  QColor colour;

  /// Width and height of the text, in points.
  [[nodiscard]] QSizeF measure(const QString& text) const;
  /// Draws the text. `corner` is the upper left corner of its box.
  void draw(QPainter& painter, const QPointF& corner, const QString& text) const;
};

/// Colours and label styles of both header strips. Made anew for every draw. All of it [main-thread].
class HeaderStyle {
 public:
  HeaderStyle();

  /// Bold and brighter for every eighth channel number, counted from one.
  [[nodiscard]] const LabelStyle& label(std::int64_t number) const {
    return number % 8 == 0 ? accent_ : plain_;
  }
  /// Every fourth channel number carries a tick.
  [[nodiscard]] static bool hasTick(std::int64_t number) { return number % 4 == 0; }

  QColor background;
  QColor border;
  QColor tick;

 private:
  LabelStyle plain_;
  LabelStyle accent_;
};

/// Draws a stroke one point wide, centred on the line from (x, top) to (x, bottom).
void strokeVertical(QPainter& painter, double x, double top, double bottom, const QColor& colour);
/// The same for the line from (left, y) to (right, y).
void strokeHorizontal(QPainter& painter, double y, double left, double right, const QColor& colour);

}  // namespace tolvane
