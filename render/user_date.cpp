// SPDX-License-Identifier: MIT
#include "render/user_date.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>

#include "reader/qps_reader.h"
#include "render/literal.h"
#include "render/name_tables.h"
#include "render/text_buffer.h"

constexpr QPSUserDefine qpsUSERDEFINE[QPSUserDefineRows] = {
    {"WEEKDAY", 7, "%s", 0}, {"Weekday", 7, "%s", 1}, {"weekday", 7, "%s", 2},
    {"MONTH", 5, "%s", 3},   {"Month", 5, "%s", 4},   {"month", 5, "%s", 5},
    {"AMPM", 4, "%s", 6},    {"WDAY", 4, "%s", 7},    {"Wday", 4, "%s", 8},
    {"wday", 4, "%s", 9},    {"YYYY", 4, "%.4d", 17}, {"MON", 3, "%s", 10},
    {"Mon", 3, "%s", 11},    {"mon", 3, "%s", 12},    {"DD", 2, "%.2d", 13},
    {"HH", 2, "%.2d", 14},   {"MM", 2, "%.2d", 15},   {"SS", 2, "%.2d", 16},
    {"YY", 2, "%.2d", 18},   {"D", 1, "%.d", 13},     {"H", 1, "%.d", 14},
    {"M", 1, "%.d", 15},     {"S", 1, "%.d", 16},
};

namespace qps {
namespace {

char userDateBuffer[512];

enum class Source : uint8_t {
  kWeekdayName,
  kWeekdayAbbreviation,
  kMonthName,
  kMonthAbbreviation,
  kHalfDay,
  kDay,
  kHour,
  kMinuteOrMonth,
  kSecond,
  kYear,
  kShortYear,
};

enum class Letters : uint8_t { kUpper, kAsTheyAre, kLower };

struct FieldRule {
  Source source;
  Letters letters = Letters::kAsTheyAre;
};

// What a row of qpsUSERDEFINE prints, by its field.
constexpr std::array<FieldRule, 19> kFieldRules = {{
    {Source::kWeekdayName, Letters::kUpper},
    {Source::kWeekdayName},
    {Source::kWeekdayName, Letters::kLower},
    {Source::kMonthName, Letters::kUpper},
    {Source::kMonthName},
    {Source::kMonthName, Letters::kLower},
    {Source::kHalfDay},
    {Source::kWeekdayAbbreviation, Letters::kUpper},
    {Source::kWeekdayAbbreviation},
    {Source::kWeekdayAbbreviation, Letters::kLower},
    {Source::kMonthAbbreviation, Letters::kUpper},
    {Source::kMonthAbbreviation},
    {Source::kMonthAbbreviation, Letters::kLower},
    {Source::kDay},
    {Source::kHour},
    {Source::kMinuteOrMonth},
    {Source::kSecond},
    {Source::kYear},
    {Source::kShortYear},
}};
static_assert(std::all_of(std::begin(qpsUSERDEFINE), std::end(qpsUSERDEFINE),
                          [](const QPSUserDefine& row) { return row.field < kFieldRules.size(); }));

// For each first character, the rows that begin with it, row r as bit r. Most characters begin
// none.
constexpr std::array<uint32_t, 256> kRowsByFirst = [] {
  std::array<uint32_t, 256> rows{};
  for (size_t row = 0; row < QPSUserDefineRows; ++row) {
    rows[static_cast<unsigned char>(qpsUSERDEFINE[row].token[0])] |= 1U << row;
  }
  return rows;
}();

bool beginsWith(std::string_view text, const QPSUserDefine& row) {
  const auto length = static_cast<size_t>(row.length);
  if (text.size() < length) return false;
  size_t same = 1;  // the first character chose the row
  while (same < length && text[same] == row.token[same])
    ++same;
  return same == length;
}

// The first row whose token `text`, which is not empty, begins with; or null.
const QPSUserDefine* matchToken(std::string_view text) {
  uint32_t rows = kRowsByFirst[static_cast<unsigned char>(text.front())];
  for (; rows != 0; rows &= rows - 1) {
    const QPSUserDefine& row = qpsUSERDEFINE[std::countr_zero(rows)];
    if (beginsWith(text, row)) return &row;
  }
  return nullptr;
}

// Of "%.4d", "%.2d" and "%.d".
constexpr int minDigits(const char* format) {
  return format[2] == 'd' ? 1 : format[2] - '0';
}

class DateWalk {
 public:
  DateWalk(const UserDateFields& fields, SSHostServices* services, bool dial, TextBuffer& out)
      : fields_(fields), services_(services), dial_(dial), out_(out) {}

  void run(std::string_view rest) {
    // A format text may be ten times as long as a result.
    while (!rest.empty() && !out_.truncated()) {
      if (rest.front() == kQuote) {
        rest.remove_prefix(1);
        out_.append(takeLiteral(rest));
        if (rest.empty()) return;
      }
      // Right behind a literal even a quote is an ordinary character: 'a''b' is a'b.
      const QPSUserDefine* row = matchToken(rest);
      if (row == nullptr) {
        out_.append(rest.front());
        rest.remove_prefix(1);
        continue;
      }
      rest.remove_prefix(static_cast<size_t>(row->length));
      printField(*row);
    }
  }

 private:
  void printField(const QPSUserDefine& row) {
    const FieldRule rule = kFieldRules[row.field];
    if (rule.source < Source::kHalfDay) {
      printName(name(rule.source), rule.letters);
    } else if (rule.source == Source::kHalfDay) {
      out_.append(dialHour(fields_.time.hours).pm ? "PM" : "AM");
    } else {
      out_.appendInteger(number(rule.source), minDigits(row.format));
    }
    afterHour_ = rule.source == Source::kHour;
  }

  std::string_view name(Source source) const {
    const auto month = static_cast<size_t>(fields_.date.month);
    const auto weekday =
        static_cast<size_t>(weekdayNameIndex(fields_.weekday, fields_.nonNegative));
    switch (source) {
      case Source::kWeekdayName:
        return weekdayNames[weekday];
      case Source::kWeekdayAbbreviation:
        return weekdayAbbreviations[weekday];
      case Source::kMonthName:
        return monthNames[month];
      default:
        return monthAbbreviations[month];
    }
  }

  int32_t number(Source source) const {
    const int32_t year = fields_.date.year;
    switch (source) {
      case Source::kDay:
        return fields_.date.day;
      case Source::kHour:
        return hour();
      case Source::kMinuteOrMonth:
        return afterHour_ ? fields_.time.minutes : fields_.date.month;
      case Source::kSecond:
        return fields_.time.seconds;
      case Source::kShortYear:
        return year >= 1900 && year <= 1999 ? year % 100 : year;
      default:
        return year;
    }
  }

  // Midnight that was reached by rounding (hour 24) is midnight on both clocks.
  int32_t hour() const {
    return dial_ ? dialHour(fields_.time.hours).hour : fields_.time.hours % 24;
  }

  void printName(std::string_view name, Letters letters) {
    if (letters == Letters::kAsTheyAre) {
      out_.append(name);
      return;
    }
    char copy[16];  // the host converts it in place; the longest name has nine letters
    copy[name.copy(copy, sizeof copy - 1)] = '\0';
    const auto convert =
        letters == Letters::kUpper ? services_->toUpperText : services_->toLowerText;
    out_.append(std::string_view(convert(services_, copy)));
  }

  const UserDateFields& fields_;
  SSHostServices* services_;
  bool dial_;
  TextBuffer& out_;
  bool afterHour_ = false;  // the token before was an hour
};

}  // namespace

UserDateFields userDateFields(double serial) {
  return {qpsSerialToDate(serial), qpsTimeOfDay(serial), weekdayIndex(serial), !(serial < 0)};
}

std::optional<std::string_view> qpsFormatUserDate(std::string_view formatText,
                                                  const UserDateFields& fields,
                                                  SSHostServices* services) {
  if (formatText.empty() || formatText.front() != 'T') return std::nullopt;
  formatText.remove_prefix(1);
  TextBuffer out(userDateBuffer);
  const bool dial = formatText.find("AMPM") != std::string_view::npos;
  DateWalk(fields, services, dial, out).run(formatText);
  return out.view();
}

}  // namespace qps
