#pragma once

#include <QProxyStyle>
#include <QStyleOption>

namespace tolvane {

/// Fusion with flat buttons of rounder corners, one ring for whatever has the focus, a plain table header and
/// slim scroll bars without arrows, which show nothing while there is nothing to scroll. A title too long for
/// its pop-up button gives way in its middle. [main-thread]
class RoundedStyle : public QProxyStyle {
  Q_OBJECT

 public:
  RoundedStyle();

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                          const QWidget* widget) const override;
  QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                       const QWidget* widget) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;

 private:
  void drawFieldFrame(const QStyleOption& option, QPainter& painter, const QWidget* widget) const;
  void drawMenuTitle(const QStyleOptionComboBox& menu, QPainter& painter, const QWidget* widget) const;
};

}  // namespace tolvane
