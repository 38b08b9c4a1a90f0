#pragma once

#include <QColor>
#include <QWidget>

namespace tolvane {

/// A plain coloured rectangle, with round corners and a border if asked for. [main-thread]
class LayerView : public QWidget {
  Q_OBJECT

 public:
  explicit LayerView(QWidget* parent = nullptr);

  [[nodiscard]] const QColor& backgroundColor() const { return background_; }
  void setBackgroundColor(const QColor& color);

  [[nodiscard]] qreal cornerRadius() const { return cornerRadius_; }
  void setCornerRadius(qreal radius);

  /// A border drawn inside the frame; a width of 0 draws none.
  [[nodiscard]] const QColor& borderColor() const { return border_; }
  [[nodiscard]] qreal borderWidth() const { return borderWidth_; }
  void setBorder(const QColor& color, qreal width);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QColor background_ = Qt::transparent;
  QColor border_ = Qt::transparent;
  qreal cornerRadius_ = 0.0;
  qreal borderWidth_ = 0.0;
};

}  // namespace tolvane
