#include "platform/linux/desktop/LinuxText.h"

#include "platform/linux/desktop/RelativeTime.h"
#include "platform/linux/menubar/Characters.h"

#include <array>
#include <string_view>

#include <QUrl>

namespace driftmark {

namespace {

struct Unit {
  std::string_view name;
  std::uint64_t lastDigit; ///< bytes in one of the last decimal
  std::uint64_t digits;    ///< how many of the last decimal make one unit
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
  std::uint64_t rest = value % unit.digits;
  std::uint64_t digits = unit.digits;
  if (rest != 0)
    text += '.';
  while (rest != 0) {
    digits /= 10;
    text += static_cast<char>('0' + rest / digits);
    rest %= digits;
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

} // namespace

std::string LinuxText::byteCount(std::int64_t bytes) const {
  if (bytes == 0)
    return "Zero KB";
  const auto magnitude = static_cast<std::uint64_t>(bytes);
  return bytes < 0 ? std::string("-").append(magnitudeText(0 - magnitude))
                   : magnitudeText(magnitude);
}

bool LinuxText::isUrl(const std::string& text) const {
  const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
  return url.isValid();
}

std::string LinuxText::relativeTime(Date date, Date now) const {
  return driftmark::relativeTime(date, now);
}

std::string LinuxText::firstCharacters(const std::string& text, std::size_t count) const {
  return driftmark::firstCharacters(text, count);
}

} // namespace driftmark
