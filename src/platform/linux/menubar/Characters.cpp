#include "platform/linux/menubar/Characters.h"

#include <QString>
#include <QTextBoundaryFinder>

namespace driftmark {

std::string firstCharacters(const std::string& text, std::size_t count) {
  if (text.size() <= count)
    return text;
  const QString whole = QString::fromStdString(text);
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, whole);
  qsizetype end = 0;
  for (std::size_t character = 0; character < count; ++character) {
    end = finder.toNextBoundary();
    if (end == whole.size() || end < 0)
      return text;
  }
  return whole.first(end).toStdString();
}

} // namespace driftmark
