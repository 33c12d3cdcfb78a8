#include "platform/linux/menubar/DisplayText.h"

#include <QTextLayout>
#include <QToolTip>

namespace driftmark::display_text {

namespace {

constexpr char16_t leftToRightMark = u'\u200E';
constexpr char16_t rightToLeftIsolate = u'\u2067';
constexpr char16_t popDirectionalIsolate = u'\u2069';
constexpr char16_t wordJoiner = u'\u2060';

/// No line, and no paragraph of a tool tip, shows more than this.
constexpr qsizetype longestLine = 1000;
constexpr qsizetype longestParagraph = 2000;
constexpr qreal toolTipWidth = 560;

/// What stands for a character that is not to be obeyed; others stand for themselves.
char16_t visible(char16_t code) {
  if (code < 0x20)
    return static_cast<char16_t>(0x2400 + code);
  if (code == 0x7F)
    return u'\u2421';
  if (code == 0x85 || code == QChar::LineSeparator || code == QChar::ParagraphSeparator)
    return u'\u2424';
  const bool isControl = code >= 0x80 && code < 0xA0;
  const bool turnsDirection =
      (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= popDirectionalIsolate);
  return isControl || turnsDirection ? char16_t(QChar::ReplacementCharacter) : code;
}

/// The text with nothing to obey in it, as far as the fonts have pictures of what was.
QString withPictures(QString text, const QFontMetricsF& metrics) {
  for (QChar& character : text) {
    const char16_t shown = visible(character.unicode());
    if (shown != character)
      character = metrics.inFontUcs4(shown) ? QChar(shown) : QChar(QChar::ReplacementCharacter);
  }
  return text;
}

/// Both ends of a text that is much too long, so that measuring it costs little.
QString ends(const QString& text, qsizetype longest) {
  if (text.size() <= longest)
    return text;
  return text.first(longest / 2) + QChar(u'…') + text.last(longest / 2);
}

/// The stretch of right-to-left writing that begins at or after `from`: from its first strong
/// character to its last before a left-to-right one.
struct Stretch {
  qsizetype begin = -1;
  qsizetype end = -1;
};
Stretch nextStretch(const QString& text, qsizetype from) {
  Stretch stretch;
  for (qsizetype at = from; at < text.size();) {
    const bool isPair = text[at].isHighSurrogate() && at + 1 < text.size();
    const char32_t character =
        isPair ? QChar::surrogateToUcs4(text[at], text[at + 1]) : text[at].unicode();
    const qsizetype next = at + (isPair ? 2 : 1);
    const QChar::Direction direction = QChar::direction(character);
    if (direction == QChar::DirR || direction == QChar::DirAL) {
      if (stretch.begin < 0)
        stretch.begin = at;
      stretch.end = next;
    } else if (direction == QChar::DirNSM && stretch.end == at) {
      stretch.end = next;
    } else if (direction == QChar::DirL && stretch.begin >= 0) {
      break;
    }
    at = next;
  }
  return stretch;
}

/// The lines that a paragraph of a tool tip takes, broken within words where these are too long.
QStringList wrapped(const QString& text, const QFontMetricsF& metrics) {
  if (metrics.horizontalAdvance(text) <= toolTipWidth)
    return {text};
  QTextLayout layout(text, QToolTip::font());
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  QStringList lines;
  layout.beginLayout();
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(toolTipWidth);
    lines.append(text.sliced(line.textStart(), line.textLength()));
  }
  layout.endLayout();
  return lines;
}

} // namespace

Line line(const QString& text, const QFontMetricsF& metrics, qreal width) {
  const QString whole = withPictures(ends(text, longestLine), metrics);
  const QString cut = metrics.elidedText(whole, Qt::ElideMiddle, width);
  return {cut, cut != whole};
}

QString inOrder(const QString& line) {
  QString result;
  qsizetype done = 0;
  for (Stretch stretch = nextStretch(line, 0); stretch.begin >= 0;
       stretch = nextStretch(line, done)) {
    if (done == 0)
      result += leftToRightMark;
    result += line.sliced(done, stretch.begin - done);
    result += rightToLeftIsolate;
    result += line.sliced(stretch.begin, stretch.end - stretch.begin);
    result += popDirectionalIsolate;
    done = stretch.end;
  }
  return done == 0 ? line : result + line.sliced(done);
}

QString toolTip(const QStringList& paragraphs) {
  QStringList lines;
  const QFontMetricsF metrics(QToolTip::font());
  for (const QString& paragraph : paragraphs)
    lines += wrapped(withPictures(ends(paragraph, longestParagraph), metrics), metrics);
  QString shown = lines.join(u'\n');
  // What would begin a tag or an entity is kept from doing so by a character that is not seen.
  if (Qt::mightBeRichText(shown)) {
    shown.replace(u'<', QString(u'<').append(wordJoiner));
    shown.replace(u'&', QString(u'&').append(wordJoiner));
  }
  return shown;
}

void showToolTip(const QPoint& position, const QStringList& paragraphs, QWidget* widget) {
  QToolTip::showText(position, toolTip(paragraphs), widget);
}

} // namespace driftmark::display_text
