#include "matrix/channel_names.h"

#include <algorithm>

namespace tolvane {
namespace {

constexpr qsizetype kMostCharacters = 80;

/// True if the character would break a line or turn the direction of the text after it.
bool isDisruptive(QChar character) {
  const char16_t code = character.unicode();
  const bool turns = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
  return character.category() == QChar::Other_Control || code == 0x2028 || code == 0x2029 || turns;
}

/// The name as it can be shown on one line.
QString shownName(QString name) {
  std::replace_if(name.begin(), name.end(), isDisruptive, QChar(u' '));
  if (name.size() <= kMostCharacters) {
    return name.trimmed();
  }
  qsizetype end = kMostCharacters - 1;
  if (name[end - 1].isHighSurrogate()) {
    --end;
  }
  return name.left(end).trimmed() + u'…';
}

QString withName(const QString& number, std::int64_t channel, const ChannelNamer& namer) {
  const QString name = namer ? shownName(namer(channel)) : QString();
  return name.isEmpty() ? number : number + u' ' + name;
}

}  // namespace

QString inputName(std::int64_t row, const ChannelNamer& namer) {
  return withName(QStringLiteral("In %1").arg(row + 1), row, namer);
}

QString outputName(std::int64_t column, const ChannelNamer& namer) {
  return withName(QStringLiteral("Out %1").arg(column + 1), column, namer);
}

QString cellName(const MatrixCell& cell, const ChannelNamer& inputs, const ChannelNamer& outputs) {
  return inputName(cell.row, inputs) + QStringLiteral(" → ") + outputName(cell.column, outputs);
}

}  // namespace tolvane
