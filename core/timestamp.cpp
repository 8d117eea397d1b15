#include "core/timestamp.hpp"

#include <cstdint>

namespace orvane::core {

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

struct CivilDate {
  std::int64_t year;
  unsigned month;  // 1-12
  unsigned day;    // 1-31
};

// Proleptic Gregorian date of a day count from 1970-01-01. Done in 64 bits
// rather than through std::chrono::year_month_day, whose year stops at
// 32767, so that every Timestamp can be written.
CivilDate civilFromDays(std::int64_t z) {
  // Counted in 400-year eras from 0000-03-01, so that the leap day falls at
  // the end of each counted year.
  z += 719468;  // days from 0000-03-01 to 1970-01-01
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const std::int64_t dayOfEra = z - era * 146097;  // [0, 146096]
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;  // [0, 399]
  const std::int64_t dayOfYear =
      dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);  // [0, 365]
  const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;          // [0, 11], March is 0
  const auto day = static_cast<unsigned>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
  const auto month =
      static_cast<unsigned>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
  const std::int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
  return {year, month, day};
}

void appendDigits(std::string& out, std::uint64_t value, int width) {
  char buffer[24];
  int n = 0;
  do {
    buffer[n++] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  for (int i = n; i < width; ++i) out += '0';
  while (n > 0) out += buffer[--n];
}

void appendYear(std::string& out, std::int64_t year) {
  if (year >= 0 && year <= 9999) {
    appendDigits(out, static_cast<std::uint64_t>(year), 4);
    return;
  }
  out += year < 0 ? '-' : '+';
  // Negating through the unsigned type keeps the most negative year defined.
  const auto magnitude =
      year < 0 ? 0 - static_cast<std::uint64_t>(year) : static_cast<std::uint64_t>(year);
  appendDigits(out, magnitude, 4);
}

// A cursor over the text being parsed. Every read checks its bounds, so a
// short or odd input simply fails.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  bool atEnd() const { return pos_ == text_.size(); }

  bool peekDigit() const { return !atEnd() && text_[pos_] >= '0' && text_[pos_] <= '9'; }

  // Exactly `count` decimal digits.
  std::optional<int> digits(int count) {
    int value = 0;
    for (int i = 0; i < count; ++i) {
      if (!peekDigit()) return std::nullopt;
      value = value * 10 + (text_[pos_++] - '0');
    }
    return value;
  }

  // One character, compared without regard to case for letters.
  bool literal(char expected) {
    if (atEnd()) return false;
    char c = text_[pos_];
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (c != expected) return false;
    ++pos_;
    return true;
  }

  std::optional<char> next() {
    if (atEnd()) return std::nullopt;
    return text_[pos_++];
  }

 private:
  std::string_view text_;
  std::size_t pos_ = 0;
};

// Fraction after the decimal point: one or more digits, cut to milliseconds.
std::optional<int> readMilliseconds(Reader& in) {
  if (!in.peekDigit()) return std::nullopt;
  int millis = 0;
  int kept = 0;
  while (in.peekDigit()) {
    const int digit = *in.digits(1);
    if (kept < 3) {
      millis = millis * 10 + digit;
      ++kept;
    }
  }
  for (; kept < 3; ++kept) millis *= 10;
  return millis;
}

// "Z" gives zero; "+hh:mm" or "-hh:mm" gives the offset east of UTC.
std::optional<minutes> readZone(Reader& in) {
  if (in.literal('Z')) return minutes{0};
  const auto sign = in.next();
  if (sign != '+' && sign != '-') return std::nullopt;
  const auto h = in.digits(2);
  if (!h || *h > 23 || !in.literal(':')) return std::nullopt;
  const auto m = in.digits(2);
  if (!m || *m > 59) return std::nullopt;
  const minutes offset = hours{*h} + minutes{*m};
  return *sign == '-' ? -offset : offset;
}

}  // namespace

Timestamp nowTimestamp() {
  return std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
}

std::string formatISO8601(Timestamp t) {
  // Floor division by hand: going through std::chrono::floor<days> would
  // overflow the milliseconds near the earliest Timestamp.
  constexpr std::int64_t kMillisPerDay = 86'400'000;
  std::int64_t dayNumber = t.time_since_epoch().count() / kMillisPerDay;
  std::int64_t millisOfDay = t.time_since_epoch().count() % kMillisPerDay;
  if (millisOfDay < 0) {
    millisOfDay += kMillisPerDay;
    --dayNumber;
  }
  const CivilDate date = civilFromDays(dayNumber);
  const auto sinceMidnight = static_cast<std::uint64_t>(millisOfDay);

  std::string out;
  out.reserve(24);
  appendYear(out, date.year);
  out += '-';
  appendDigits(out, date.month, 2);
  out += '-';
  appendDigits(out, date.day, 2);
  out += 'T';
  appendDigits(out, sinceMidnight / 3'600'000, 2);
  out += ':';
  appendDigits(out, sinceMidnight / 60'000 % 60, 2);
  out += ':';
  appendDigits(out, sinceMidnight / 1000 % 60, 2);
  out += '.';
  appendDigits(out, sinceMidnight % 1000, 3);
  out += 'Z';
  return out;
}

std::optional<Timestamp> parseISO8601(std::string_view text) {
  Reader in(text);
  const auto year = in.digits(4);
  if (!year || !in.literal('-')) return std::nullopt;
  const auto month = in.digits(2);
  if (!month || !in.literal('-')) return std::nullopt;
  const auto day = in.digits(2);
  if (!day || !in.literal('T')) return std::nullopt;
  const auto hour = in.digits(2);
  if (!hour || !in.literal(':')) return std::nullopt;
  const auto minute = in.digits(2);
  if (!minute || !in.literal(':')) return std::nullopt;
  const auto second = in.digits(2);
  if (!second) return std::nullopt;
  int millis = 0;
  if (in.literal('.')) {
    const auto fraction = readMilliseconds(in);
    if (!fraction) return std::nullopt;
    millis = *fraction;
  }
  const auto offset = readZone(in);
  if (!offset || !in.atEnd()) return std::nullopt;

  // year_month_day::ok() knows month lengths and leap years.
  const std::chrono::year_month_day date{std::chrono::year{*year},
                                         std::chrono::month{static_cast<unsigned>(*month)},
                                         std::chrono::day{static_cast<unsigned>(*day)}};
  if (!date.ok() || *hour > 23 || *minute > 59 || *second > 60) return std::nullopt;

  const Timestamp local = std::chrono::sys_days{date} + hours{*hour} + minutes{*minute} +
                          seconds{*second} + milliseconds{millis};
  return local - *offset;
}

}  // namespace orvane::core
