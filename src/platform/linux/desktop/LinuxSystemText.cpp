// How byte counts and relative times are worded, what a URL is, and where a text is cut.

#include "platform/linux/desktop/LinuxAdapters.h"

#include <array>
#include <string_view>

#include <QDateTime>
#include <QString>
#include <QTextBoundaryFinder>
#include <QUrl>

namespace driftmark {

namespace {

struct Unit {
  std::string_view name;
  std::uint64_t lastDigit; ///< how many bytes one of the last decimal is
  std::uint64_t digits;    ///< how many of the last decimal are one unit
};

constexpr std::array units{
    Unit{"KB", 1'000, 1},
    Unit{"MB", 100'000, 10},
    Unit{"GB", 10'000'000, 100},
    Unit{"TB", 10'000'000'000, 100},
    Unit{"PB", 10'000'000'000'000, 100},
    Unit{"EB", 10'000'000'000'000'000, 100},
};

constexpr std::uint64_t roundedQuotient(std::uint64_t number, std::uint64_t divisor) {
  return number / divisor + (number % divisor >= divisor / 2 ? 1 : 0);
}

std::string inUnit(std::uint64_t value, const Unit& unit) {
  std::string text = std::to_string(value / unit.digits);
  std::uint64_t remainder = value % unit.digits;
  std::uint64_t digits = unit.digits;
  if (remainder != 0)
    text += '.';
  while (remainder != 0) {
    digits /= 10;
    text += static_cast<char>('0' + remainder / digits);
    remainder %= digits;
  }
  return text.append(" ").append(unit.name);
}

std::string magnitudeText(std::uint64_t bytes) {
  if (bytes < 1000)
    return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  for (const Unit& unit : units) {
    const std::uint64_t value = roundedQuotient(bytes, unit.lastDigit);
    if (value < 1000 * unit.digits)
      return inUnit(value, unit);
  }
  return inUnit(roundedQuotient(bytes, units.back().lastDigit), units.back());
}

struct Amount {
  qint64 count;
  std::string_view unit;
};

/// The largest number of calendar steps that does not pass `to`; `estimate` is close to it.
template <class Step> qint64 stepsUpTo(const QDateTime& to, qint64 estimate, Step step) {
  while (estimate > 0 && step(estimate) > to)
    --estimate;
  while (step(estimate + 1) <= to)
    ++estimate;
  return estimate;
}

/// The time from `from` to the later `to`, in the largest unit that fits.
Amount elapsed(const QDateTime& from, const QDateTime& to) {
  const qint64 months = stepsUpTo(
      to,
      qint64{to.date().year() - from.date().year()} * 12 + to.date().month() - from.date().month(),
      [&from](qint64 count) { return from.addMonths(static_cast<int>(count)); });
  if (months >= 12)
    return {months / 12, "year"};
  if (months > 0)
    return {months, "month"};
  const qint64 days =
      stepsUpTo(to, from.daysTo(to), [&from](qint64 count) { return from.addDays(count); });
  if (days >= 7)
    return {days / 7, "week"};
  if (days > 0)
    return {days, "day"};
  const qint64 seconds = from.secsTo(to);
  if (seconds >= 3600)
    return {seconds / 3600, "hour"};
  if (seconds >= 60)
    return {seconds / 60, "minute"};
  return {seconds, "second"};
}

QDateTime local(Date date) {
  using std::chrono::milliseconds;
  return QDateTime::fromMSecsSinceEpoch(
      std::chrono::floor<milliseconds>(date.time_since_epoch()).count());
}

} // namespace

std::string LinuxSystemText::byteCount(std::int64_t bytes) const {
  if (bytes == 0)
    return "Zero KB";
  const auto magnitude = static_cast<std::uint64_t>(bytes);
  return bytes < 0 ? std::string("-").append(magnitudeText(0 - magnitude))
                   : magnitudeText(magnitude);
}

bool LinuxSystemText::isUrl(const std::string& text) const {
  const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
  return url.isValid();
}

std::string LinuxSystemText::relativeTime(Date date, Date now) const {
  const bool isPast = date < now;
  const Amount amount =
      isPast ? elapsed(local(date), local(now)) : elapsed(local(now), local(date));
  std::string text = std::to_string(amount.count).append(" ").append(amount.unit);
  if (amount.count != 1)
    text += 's';
  return isPast && amount.count != 0 ? text.append(" ago") : std::string("in ").append(text);
}

std::string LinuxSystemText::firstCharacters(const std::string& text, std::size_t count) const {
  if (text.size() <= count)
    return text;
  const QString whole = QString::fromStdString(text);
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, whole);
  qsizetype end = 0;
  for (std::size_t cluster = 0; cluster < count; ++cluster) {
    end = finder.toNextBoundary();
    if (end == whole.size() || end < 0)
      return text;
  }
  return whole.first(end).toStdString();
}

} // namespace driftmark
