// SPDX-License-Identifier: MIT
#include "bench/floor.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>

namespace qps::bench {
namespace {

// 1899-12-30, in days from 1970-01-01.
constexpr int kSerialZero = -25'569;

constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

double doubleOf(const std::uint8_t* bytes) {
  double value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

// Text that grows in an area which is known to suffice.
class Text {
 public:
  explicit Text(char (&area)[kFloorTextBytes])
      : begin_(area), end_(area), last_(area + kFloorTextBytes) {}

  Text& add(char character) {
    *end_++ = character;
    return *this;
  }
  Text& add(std::string_view text) {
    end_ += text.copy(end_, text.size());
    return *this;
  }
  Text& integer(int value) {
    end_ = std::to_chars(end_, last_, value).ptr;
    return *this;
  }
  Text& twoDigits(int value) {
    if (value < 10) add('0');
    return integer(value);
  }
  Text& fixed(double value, int decimals) {
    end_ = std::to_chars(end_, last_, value, std::chars_format::fixed, decimals).ptr;
    return *this;
  }
  Text& grouped(double value) {
    char digits[kFloorTextBytes];
    const char* end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 2).ptr;
    const char* point = end - 3;
    for (const char* at = digits; at != point; ++at) {
      add(*at);
      if (at + 1 != point && (point - at) % 3 == 1) add(',');
    }
    return add({point, 3});
  }
  Text& trimmed(double value) {
    fixed(value, 8);
    while (end_[-1] == '0')
      --end_;
    if (end_[-1] == '.') --end_;
    return *this;
  }
  Text& scientific(double value) {
    char* start = end_;
    end_ = std::to_chars(end_, last_, value, std::chars_format::scientific, 2).ptr;
    *static_cast<char*>(std::memchr(start, 'e', static_cast<std::size_t>(end_ - start))) = 'E';
    return *this;
  }

  std::string_view view() const { return {begin_, static_cast<std::size_t>(end_ - begin_)}; }

 private:
  char* begin_;
  char* end_;
  char* last_;
};

struct Date {
  int year, month, day;
};

Date dateOf(double serial) {
  const std::chrono::sys_days days{std::chrono::days{static_cast<int>(serial) + kSerialZero}};
  const std::chrono::year_month_day date{days};
  return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day()))};
}

std::string_view monthOf(const Date& date) {
  return kMonths[date.month - 1];
}

int shortYearUntil1999(int year) {
  return year < 2000 ? year % 100 : year;
}

void addTime(Text& text, double serial) {
  const auto seconds = static_cast<int>((serial - std::floor(serial)) * 86'400.0 + 0.5);
  const int hour = seconds / 3'600;
  text.twoDigits(hour % 12 == 0 ? 12 : hour % 12).add(':').twoDigits(seconds / 60 % 60);
  text.add(':').twoDigits(seconds % 60).add(hour >= 12 && hour < 24 ? " PM" : " AM");
}

void addMarked(Text& text, double value, std::string_view mark) {
  if (value < 0) {
    text.add('(').add(mark).grouped(-value).add(") ");
  } else {
    text.add(mark).grouped(value).add(' ');
  }
}

void addSections(Text& text, double value) {
  if (value > 0) {
    text.fixed(value, 2);
  } else if (value < 0) {
    text.add('(').fixed(-value, 2).add(')');
  } else {
    text.add("none");
  }
}

void addUser(Text& text, double value, std::string_view mark) {
  if (value < 0) text.add('-');
  text.grouped(std::fabs(value)).add(mark);
}

}  // namespace

std::string_view floorText(Family family, const std::uint8_t* body, std::size_t bodyBytes,
                           char (&area)[kFloorTextBytes]) {
  if (family == Family::kLabel) {
    const auto* label = reinterpret_cast<const char*>(body + 7);
    return {label, strnlen(label, bodyBytes - 7)};
  }
  Text text(area);
  if (family == Family::kInteger) {
    return text.integer(static_cast<std::int16_t>(body[6] | body[7] << 8)).view();
  }
  const double value = doubleOf(body + 6);
  switch (family) {
    case Family::kFixed:
      text.fixed(value, 2);
      break;
    case Family::kComma:
      addMarked(text, value, "");
      break;
    case Family::kCurrency:
      addMarked(text, value, "$");
      break;
    case Family::kPercent:
      text.fixed(value * 100.0, 2).add('%');
      break;
    case Family::kScientific:
      text.scientific(value);
      break;
    case Family::kGeneral:
      text.trimmed(value);
      break;
    case Family::kDayMonthYear: {
      const Date date = dateOf(value);
      text.twoDigits(date.day).add('-').add(monthOf(date)).add('-').twoDigits(date.year % 100);
      break;
    }
    case Family::kMonthYear: {
      const Date date = dateOf(value);
      text.add(monthOf(date)).add('-').twoDigits(shortYearUntil1999(date.year));
      break;
    }
    case Family::kNumericDate: {
      const Date date = dateOf(value);
      text.twoDigits(date.month).add('/').twoDigits(date.day);
      text.add('/').twoDigits(date.year % 100);
      break;
    }
    case Family::kTime:
      addTime(text, value);
      break;
    case Family::kUserPlain:
      addUser(text, value, "");
      break;
    case Family::kUserCurrency:
      addUser(text, value, " EUR");
      break;
    case Family::kUserSections:
      addSections(text, value);
      break;
    case Family::kUserDate: {
      const Date date = dateOf(value);
      text.twoDigits(date.day).add('-').add(monthOf(date)).add('-').integer(date.year);
      break;
    }
    default:
      break;
  }
  return text.view();
}

std::size_t floorHeaders(SSStream* stream) {
  std::size_t records = 0;
  std::uint8_t header[4];
  while (stream->read(stream, header, sizeof header) == sizeof header) {
    ++records;
    const auto bytes = static_cast<std::ptrdiff_t>(header[2] | header[3] << 8);
    if (stream->seek(stream, bytes, SSSeekFromCurrent) == 0) break;
  }
  return records;
}

std::size_t floorItems(SSStream* stream, std::uint32_t offset, SSItemAlloc itemAlloc,
                       void* context) {
  std::size_t cells = 0;
  walkRecords(stream, offset, [&](unsigned type, const std::uint8_t* body, std::size_t bytes) {
    if (!isCellRecord(type)) return type != test::rec::kSheetEnd;
    char area[kFloorTextBytes];
    const std::string_view text = floorText(familyOf(body), body, bytes, area);
    auto* copy = static_cast<char*>(itemAlloc(context, nullptr, text.size() + 1, 0));
    if (copy == nullptr) return false;
    copy[text.copy(copy, text.size())] = '\0';
    ++cells;
    return true;
  });
  return cells;
}

}  // namespace qps::bench
