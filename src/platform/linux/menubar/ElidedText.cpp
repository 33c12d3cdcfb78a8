// How titles and tool tips are shortened and made safe to draw.

#include "platform/linux/menubar/ElidedText.h"

#include <QTextLayout>
#include <QToolTip>

namespace driftmark {

namespace {

constexpr char16_t leftToRightMark = u'\u200E';
constexpr char16_t rightToLeftIsolate = u'\u2067';
constexpr char16_t popDirectionalIsolate = u'\u2069';
constexpr char16_t wordJoiner = u'\u2060';

/// In UTF-16 code units.
constexpr qsizetype maxLine = 1000;
constexpr qsizetype maxParagraph = 2000;

constexpr qreal maxToolTipWidth = 560;

/// What is drawn for a character: the picture of a control character, U+FFFD for a character that
/// changes the direction of writing, any other character itself.
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

/// Replaces control characters by their pictures, or by U+FFFD where the fonts have no picture.
QString withPictures(QString text, const QFontMetricsF& metrics) {
  for (QChar& character : text) {
    const char16_t shown = visible(character.unicode());
    if (shown != character)
      character = metrics.inFontUcs4(shown) ? QChar(shown) : QChar(QChar::ReplacementCharacter);
  }
  return text;
}

/// Both ends of a text that is much too long, so that it is cheap to measure.
QString ends(const QString& text, qsizetype max) {
  if (text.size() <= max)
    return text;
  return text.first(max / 2) + QChar(u'…') + text.last(max / 2);
}

/// A run of right-to-left characters: from its first strong character to the last one before a
/// left-to-right character.
struct Run {
  qsizetype begin = -1;
  qsizetype end = -1;
};

/// The first run at or after `from`; its `begin` is -1 when there is none.
Run nextRun(const QString& text, qsizetype from) {
  Run run;
  for (qsizetype at = from; at < text.size();) {
    const bool isPair = text[at].isHighSurrogate() && at + 1 < text.size();
    const char32_t character =
        isPair ? QChar::surrogateToUcs4(text[at], text[at + 1]) : text[at].unicode();
    const qsizetype next = at + (isPair ? 2 : 1);
    const QChar::Direction direction = QChar::direction(character);
    if (direction == QChar::DirR || direction == QChar::DirAL) {
      if (run.begin < 0)
        run.begin = at;
      run.end = next;
    } else if (direction == QChar::DirNSM && run.end == at) {
      run.end = next;
    } else if (direction == QChar::DirL && run.begin >= 0) {
      break;
    }
    at = next;
  }
  return run;
}

/// The lines of a paragraph of a tool tip. A word that is too long for a line is broken.
QStringList wrapped(const QString& text, const QFontMetricsF& metrics) {
  if (metrics.horizontalAdvance(text) <= maxToolTipWidth)
    return {text};
  QTextLayout layout(text, QToolTip::font());
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  QStringList lines;
  layout.beginLayout();
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(maxToolTipWidth);
    lines.append(text.sliced(line.textStart(), line.textLength()));
  }
  layout.endLayout();
  return lines;
}

} // namespace

ElidedLine elidedLine(const QString& text, const QFontMetricsF& metrics, qreal width) {
  const QString whole = withPictures(ends(text, maxLine), metrics);
  const QString elided = metrics.elidedText(whole, Qt::ElideMiddle, width);
  return {elided, elided != whole, metrics.horizontalAdvance(elided)};
}

QString withIsolatedRightToLeft(const QString& line) {
  QString result;
  qsizetype done = 0;
  for (Run run = nextRun(line, 0); run.begin >= 0; run = nextRun(line, done)) {
    if (done == 0)
      result += leftToRightMark;
    result += line.sliced(done, run.begin - done);
    result += rightToLeftIsolate;
    result += line.sliced(run.begin, run.end - run.begin);
    result += popDirectionalIsolate;
    done = run.end;
  }
  return done == 0 ? line : result + line.sliced(done);
}

QString plainToolTip(const QStringList& paragraphs) {
  QStringList lines;
  const QFontMetricsF metrics(QToolTip::font());
  for (const QString& paragraph : paragraphs)
    lines += wrapped(withPictures(ends(paragraph, maxParagraph), metrics), metrics);
  QString text = lines.join(u'\n');
  // An invisible character behind "<" and "&" keeps them from starting a tag or an entity.
  if (Qt::mightBeRichText(text)) {
    text.replace(u'<', QString(u'<').append(wordJoiner));
    text.replace(u'&', QString(u'&').append(wordJoiner));
  }
  return text;
}

void showPlainToolTip(const QPoint& position, const QStringList& paragraphs, QWidget* widget) {
  QToolTip::showText(position, plainToolTip(paragraphs), widget);
}

} // namespace driftmark
