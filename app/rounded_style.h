#pragma once

#include <QProxyStyle>
#include <QStyleOption>

namespace tolvane {

/// Fusion with flat, rounder buttons, one focus ring for all controls, a plain table header and slim scroll
/// bars without arrows. A scroll bar shows no thumb if there is nothing to scroll. A pop-up button elides a
/// long title in the middle. [main-thread]
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
