// Times and durations as the user writes them.

#include "tools/corvo/Times.h"

#include <cctype>
#include <charconv>
#include <system_error>

#include "platform/Win32Compat.h"
#include "tools/corvo/InputError.h"

namespace corvo {
namespace {

constexpr std::size_t kDecimals = 7;        // of a second: 100 ns
constexpr std::size_t kMostUnitDigits = 8;  // so many hours still fit into a time

// Takes a text apart from left to right. What it refuses to take is left in place.
class Reader {
 public:
  explicit Reader(const std::string& text) : m_at(text.data()), m_end(m_at + text.size()) {}

  bool AtEnd() const { return m_at == m_end; }

  bool Skip(char wanted) {
    if (AtEnd() || *m_at != wanted) return false;
    ++m_at;
    return true;
  }

  // A whole run of digits, of `least` to `most` of them; `least` is not zero.
  template <class Number>
  bool Take(std::size_t least, std::size_t most, Number& number) {
    const char* stop = m_at;
    while (stop != m_end && std::isdigit(static_cast<unsigned char>(*stop))) ++stop;
    const auto count = static_cast<std::size_t>(stop - m_at);
    if (count < least || count > most) return false;
    if (std::from_chars(m_at, stop, number).ec != std::errc()) return false;
    m_at = stop;
    return true;
  }

  // Nothing, or a point and one to seven decimals, in units of the seventh.
  bool TakeFraction(long long& units) {
    units = 0;
    if (!Skip('.')) return true;
    const char* const begin = m_at;
    if (!Take(1, kDecimals, units)) return false;
    for (auto digits = m_at - begin; digits < std::ptrdiff_t{kDecimals}; ++digits) units *= 10;
    return true;
  }

 private:
  const char* m_at;
  const char* m_end;
};

bool ReadCalendar(Reader text, SYSTEMTIME& calendar, long long& fraction) {
  return text.Take(4, 4, calendar.wYear) && text.Skip('-') && text.Take(2, 2, calendar.wMonth) &&
         text.Skip('-') && text.Take(2, 2, calendar.wDay) && text.Skip('T') &&
         text.Take(2, 2, calendar.wHour) && text.Skip(':') && text.Take(2, 2, calendar.wMinute) &&
         text.Skip(':') && text.Take(2, 2, calendar.wSecond) && text.TakeFraction(fraction) &&
         text.Skip('Z') && text.AtEnd();
}

struct Unit {
  char letter;
  long long seconds;
};
constexpr Unit kUnits[] = {{'h', 3600}, {'m', 60}, {'s', 1}};

// A count with its letter. Seconds may have decimals and, at the end, do without the letter.
bool TakeUnit(Reader& text, const Unit& unit, long long& ticks) {
  const bool seconds = unit.seconds == 1;
  Reader ahead = text;
  long long count = 0;
  long long fraction = 0;
  if (!ahead.Take(1, kMostUnitDigits, count)) return false;
  if (seconds && !ahead.TakeFraction(fraction)) return false;
  if (!ahead.Skip(unit.letter) && !(seconds && ahead.AtEnd())) return false;
  ticks += count * unit.seconds * kTicksPerSecond + fraction;
  text = ahead;
  return true;
}

}  // namespace

long long ParseTime(const std::string& text) {
  SYSTEMTIME calendar{};
  long long fraction = 0;
  long long time = 0;
  if (ReadCalendar(Reader(text), calendar, fraction)) {
    if (SystemTimeToFileTime(&calendar, &time) == 0) throw InputError("no such date or time");
    return time + fraction;
  }
  Reader count(text);
  if (!count.Take(1, text.size(), time) || !count.AtEnd()) {
    throw InputError("not a time such as 2024-05-17T09:30:00Z or a count of 100 ns since 1601");
  }
  return time;
}

long long ParseDuration(const std::string& text) {
  Reader reader(text);
  long long ticks = 0;
  int units = 0;
  for (const Unit& unit : kUnits) units += TakeUnit(reader, unit, ticks) ? 1 : 0;
  if (units == 0 || !reader.AtEnd()) {
    throw InputError("not a duration such as 65.9s, 1m5s or 65.9");
  }
  return ticks;
}

}  // namespace corvo
