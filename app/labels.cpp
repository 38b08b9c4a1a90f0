#include "app/labels.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>
#include <algorithm>
#include <memory>
#include <vector>

namespace tolvane {
namespace {

using Paragraphs = std::vector<std::unique_ptr<QTextLayout>>;

/// Breaks the text into lines of at most `width`. Returns one layout per paragraph.
Paragraphs layOut(const QString& text, const QFont& font, qreal width) {
  Paragraphs paragraphs;
  for (const QString& paragraph : text.split(u'\n')) {
    auto& layout = paragraphs.emplace_back(std::make_unique<QTextLayout>(paragraph, font));
    layout->beginLayout();
    for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
      line.setLineWidth(width);
    }
    layout->endLayout();
  }
  return paragraphs;
}

/// Counts an empty paragraph as one line.
int lineCount(const Paragraphs& paragraphs) {
  int count = 0;
  for (const auto& layout : paragraphs) count += std::max(layout->lineCount(), 1);
  return count;
}

}  // namespace

QString LineLabel::line() const {
  QString shown = text();
  return shown.replace(u'\n', u' ');
}

QString LineLabel::visibleLine() const {
  return fontMetrics().elidedText(line(), Qt::ElideRight, contentsRect().width());
}

bool LineLabel::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QLabel::event(event);
  const bool allShows = visibleLine() == text();
  QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                     allShows ? QString() : Qt::convertFromPlainText(text()), this);
  return true;
}

void LineLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setPen(palette().color(foregroundRole()));
  painter.drawText(contentsRect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, visibleLine());
}

void TextBlockLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setPen(palette().color(foregroundRole()));
  const QRectF area = contentsRect();
  const Paragraphs paragraphs = layOut(text(), font(), area.width());
  // A gap of a fifth of the font size reads well. It shrinks if the height is too small.
  const qreal lineHeight = std::min(font().pixelSize() * 1.2, area.height() / lineCount(paragraphs));
  qreal y = area.top();
  for (const auto& layout : paragraphs) {
    for (int i = 0; i < layout->lineCount(); ++i) {
      layout->lineAt(i).draw(&painter, QPointF(area.left(), y + lineHeight * i));
    }
    y += lineHeight * std::max(layout->lineCount(), 1);
  }
}

}  // namespace tolvane
