#include "platform/linux/desktop/RelativeTime.h"

#include <string_view>

#include <QDateTime>

namespace driftmark {

namespace {

struct Amount {
  qint64 count;
  std::string_view unit;
};

/// How often a calendar step can be made from `from` without passing `to`: about `estimate`.
template <class Step> qint64 stepsUpTo(const QDateTime& to, qint64 estimate, Step step) {
  while (estimate > 0 && step(estimate) > to)
    --estimate;
  while (step(estimate + 1) <= to)
    ++estimate;
  return estimate;
}

/// What passes from `from` to the later `to`, in the largest unit that fits.
Amount passed(const QDateTime& from, const QDateTime& to) {
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

std::string relativeTime(Date date, Date now) {
  const bool isPast = date < now;
  const Amount amount = isPast ? passed(local(date), local(now)) : passed(local(now), local(date));
  std::string text = std::to_string(amount.count).append(" ").append(amount.unit);
  if (amount.count != 1)
    text += 's';
  return isPast && amount.count != 0 ? text.append(" ago") : std::string("in ").append(text);
}

} // namespace driftmark
