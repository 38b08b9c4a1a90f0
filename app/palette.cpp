#include "app/palette.h"

#include <QApplication>
#include <QFontDatabase>
#include <QToolTip>

#include "app/rounded_style.h"
#include "app/window_icon.h"
#include "matrix/calibrated_color.h"

namespace tolvane {
namespace {

void setColors(QPalette& palette) {
  palette.setColor(QPalette::Window, calibratedWhite(0.11));
  palette.setColor(QPalette::WindowText, calibratedWhite(0.86));
  palette.setColor(QPalette::Base, calibratedWhite(0.155));
  palette.setColor(QPalette::AlternateBase, calibratedWhite(0.19));
  palette.setColor(QPalette::Text, calibratedWhite(0.92));
  palette.setColor(QPalette::PlaceholderText, calibratedWhite(0.45));
  palette.setColor(QPalette::Button, calibratedWhite(0.22));
  palette.setColor(QPalette::ButtonText, calibratedWhite(0.92));
  palette.setColor(QPalette::BrightText, calibratedWhite(1.0));
  palette.setColor(QPalette::ToolTipBase, calibratedWhite(0.19));
  palette.setColor(QPalette::ToolTipText, calibratedWhite(0.92));
  palette.setColor(QPalette::Light, calibratedWhite(0.28));
  palette.setColor(QPalette::Midlight, calibratedWhite(0.25));
  palette.setColor(QPalette::Mid, calibratedWhite(0.17));
  palette.setColor(QPalette::Dark, calibratedWhite(0.08));
  palette.setColor(QPalette::Shadow, calibratedWhite(0.0));
  // The matrix's green, dark enough that white text on it stays legible.
  palette.setColor(QPalette::Highlight, calibratedRgb(0.10, 0.42, 0.20));
  palette.setColor(QPalette::HighlightedText, calibratedWhite(1.0));
  palette.setColor(QPalette::Link, calibratedRgb(0.18, 0.85, 0.38));
  palette.setColor(QPalette::LinkVisited, calibratedRgb(0.18, 0.65, 0.38));
}

/// Fusion derives its disabled look from these colours. By default they are as bright as the enabled ones.
void setDisabledColors(QPalette& palette) {
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                          QPalette::HighlightedText, QPalette::PlaceholderText}) {
    palette.setColor(QPalette::Disabled, role, calibratedWhite(0.4));
  }
  palette.setColor(QPalette::Disabled, QPalette::Base, calibratedWhite(0.13));
  palette.setColor(QPalette::Disabled, QPalette::Button, calibratedWhite(0.16));
  palette.setColor(QPalette::Disabled, QPalette::Highlight, calibratedWhite(0.25));
}

QFont inPixels(QFont font, int pixels) {
  font.setPixelSize(pixels);
  return font;
}

}  // namespace

QColor runningColor() {
  return calibratedRgb(0.15, 0.85, 0.35);
}

QColor stoppedColor() {
  return calibratedRgb(0.8, 0.2, 0.2);
}

QColor focusColor() {
  return calibratedRgb(0.4, 0.7, 1.0);
}

QPalette applicationPalette() {
  QPalette palette;
  setColors(palette);
  setDisabledColors(palette);
  return palette;
}

QFont systemFont(int pixels, bool bold) {
  QFont font = inPixels(QFontDatabase::systemFont(QFontDatabase::GeneralFont), pixels);
  font.setBold(bold);
  return font;
}

QFont monospacedFont(int pixels) {
  return inPixels(QFontDatabase::systemFont(QFontDatabase::FixedFont), pixels);
}

void applyLook() {
  QApplication::setStyle(new RoundedStyle);
  QApplication::setPalette(applicationPalette());
  QApplication::setFont(systemFont(kDefaultFontPixels));
  QToolTip::setPalette(applicationPalette());
  QToolTip::setFont(systemFont(11));
  QApplication::setWindowIcon(windowIcon());
}

}  // namespace tolvane
