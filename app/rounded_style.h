#pragma once

#include <QProxyStyle>

namespace tolvane {

/// Fusion with flat buttons of rounder corners, a plain table header and slim scroll bars without arrows,
/// which show nothing while there is nothing to scroll. [main-thread]
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
};

}  // namespace tolvane
