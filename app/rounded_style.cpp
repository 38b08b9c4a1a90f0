#include "app/rounded_style.h"

#include <QPainter>
#include <QPushButton>
#include <QStyleOption>

#include "app/focus_ring.h"

namespace tolvane {
namespace {

constexpr qreal kCornerRadius = 5.0;
constexpr qreal kFieldCornerRadius = 2.0;
constexpr int kScrollBarExtent = 12;
constexpr int kShortestThumb = 24;

QColor buttonFill(const QStyleOption& option) {
  const QColor color = option.palette.color(QPalette::Button);
  if (!(option.state & QStyle::State_Enabled)) return color;
  if (option.state & (QStyle::State_Sunken | QStyle::State_On)) return color.darker(130);
  return (option.state & QStyle::State_MouseOver) ? color.lighter(118) : color;
}

/// True if the widget has the focus and the user moves the focus by keyboard. A click on a button shows no
/// ring.
bool hasKeyboardFocus(const QStyleOption& option) {
  return (option.state & QStyle::State_HasFocus) && (option.state & QStyle::State_KeyboardFocusChange);
}

void drawButton(const QStyleOption& option, QPainter& painter) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(option.palette.color(QPalette::Button).lighter(150), 1.0));
  painter.setBrush(buttonFill(option));
  painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), kCornerRadius, kCornerRadius);
  painter.restore();
  if (hasKeyboardFocus(option)) drawFocusRing(painter, option.rect, kCornerRadius - 1.0);
}

void drawHeaderArea(const QStyleOption& option, QPainter& painter) {
  painter.fillRect(option.rect, option.palette.color(QPalette::Mid));
  const QRect bottom(option.rect.left(), option.rect.bottom(), option.rect.width(), 1);
  painter.fillRect(bottom, option.palette.color(QPalette::Light));
}

void drawHeaderSection(const QStyleOption& option, QPainter& painter) {
  drawHeaderArea(option, painter);
  const QRect right(option.rect.right(), option.rect.top() + 4, 1, option.rect.height() - 8);
  painter.fillRect(right, option.palette.color(QPalette::Light));
}

/// Rectangle of a scroll bar's thumb. Its share of the bar is the visible share of the whole, but at least
/// kShortestThumb.
QRect thumbOf(const QStyleOptionSlider& bar) {
  const bool isHorizontal = bar.orientation == Qt::Horizontal;
  const int length = isHorizontal ? bar.rect.width() : bar.rect.height();
  const qint64 span = qint64{bar.maximum} - bar.minimum + bar.pageStep;
  const int proportion = span > 0 ? static_cast<int>(qint64{length} * bar.pageStep / span) : length;
  const int thumb = qBound(qMin(kShortestThumb, length), proportion, length);
  const int start = QStyle::sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition,
                                                    length - thumb, bar.upsideDown);
  return isHorizontal ? QRect(bar.rect.x() + start, bar.rect.y(), thumb, bar.rect.height())
                      : QRect(bar.rect.x(), bar.rect.y() + start, bar.rect.width(), thumb);
}

void drawScrollBar(const QStyleOptionSlider& bar, QPainter& painter) {
  painter.fillRect(bar.rect, bar.palette.color(QPalette::Base));
  if (bar.maximum <= bar.minimum) return;
  const bool isPressed =
      (bar.activeSubControls & QStyle::SC_ScrollBarSlider) && (bar.state & QStyle::State_Sunken);
  const QColor color = bar.palette.color(QPalette::Button).lighter(150);
  const QRectF thumb = QRectF(thumbOf(bar)).adjusted(3.0, 3.0, -3.0, -3.0);
  const qreal radius = qMin(thumb.width(), thumb.height()) / 2.0;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(isPressed ? color.lighter(130) : color);
  painter.drawRoundedRect(thumb, radius, radius);
  painter.restore();
}

}  // namespace

RoundedStyle::RoundedStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void RoundedStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
  if (element == PE_PanelButtonCommand) return drawButton(*option, *painter);
  if (element == PE_FrameLineEdit) return drawFieldFrame(*option, *painter, widget);
  if (element == PE_FrameFocusRect) {
    // drawButton draws a push button's ring.
    const bool isPushButton = qobject_cast<const QPushButton*>(widget) != nullptr;
    if (hasKeyboardFocus(*option) && !isPushButton) drawFocusRing(*painter, option->rect, kFieldCornerRadius);
    return;
  }
  QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void RoundedStyle::drawFieldFrame(const QStyleOption& option, QPainter& painter,
                                  const QWidget* widget) const {
  QStyleOption unfocused = option;
  unfocused.state &= ~State_HasFocus;
  QProxyStyle::drawPrimitive(PE_FrameLineEdit, &unfocused, &painter, widget);
  if (option.state & State_HasFocus) drawFocusRing(painter, option.rect, kFieldCornerRadius);
}

void RoundedStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
  if (element == CE_HeaderSection) return drawHeaderSection(*option, *painter);
  if (element == CE_HeaderEmptyArea) return drawHeaderArea(*option, *painter);
  const auto* const menu = qstyleoption_cast<const QStyleOptionComboBox*>(option);
  if (element == CE_ComboBoxLabel && menu != nullptr) return drawMenuTitle(*menu, *painter, widget);
  QProxyStyle::drawControl(element, option, painter, widget);
}

void RoundedStyle::drawMenuTitle(const QStyleOptionComboBox& menu, QPainter& painter,
                                 const QWidget* widget) const {
  QStyleOptionComboBox fitting = menu;
  const int width = subControlRect(CC_ComboBox, &menu, SC_ComboBoxEditField, widget).width() - 2;
  fitting.currentText = menu.fontMetrics.elidedText(menu.currentText, Qt::ElideMiddle, width);
  QProxyStyle::drawControl(CE_ComboBoxLabel, &fitting, &painter, widget);
}

void RoundedStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                      QPainter* painter, const QWidget* widget) const {
  const auto* const bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
  if (control == CC_ScrollBar && bar != nullptr) return drawScrollBar(*bar, *painter);
  QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect RoundedStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                                   const QWidget* widget) const {
  const auto* const bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
  if (control != CC_ScrollBar || bar == nullptr) {
    return QProxyStyle::subControlRect(control, option, part, widget);
  }
  const QRect thumb = thumbOf(*bar);
  const bool isHorizontal = bar->orientation == Qt::Horizontal;
  switch (part) {
    case SC_ScrollBarSlider:
      return thumb;
    case SC_ScrollBarGroove:
      return bar->rect;
    case SC_ScrollBarSubPage:
      return isHorizontal ? QRect(bar->rect.topLeft(), thumb.bottomLeft() - QPoint(1, 0))
                          : QRect(bar->rect.topLeft(), thumb.topRight() - QPoint(0, 1));
    case SC_ScrollBarAddPage:
      return isHorizontal ? QRect(thumb.topRight() + QPoint(1, 0), bar->rect.bottomRight())
                          : QRect(thumb.bottomLeft() + QPoint(0, 1), bar->rect.bottomRight());
    default:
      return {};
  }
}

int RoundedStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
  if (metric == PM_ScrollBarExtent) return kScrollBarExtent;
  if (metric == PM_ScrollBarSliderMin) return kShortestThumb;
  return QProxyStyle::pixelMetric(metric, option, widget);
}

}  // namespace tolvane
