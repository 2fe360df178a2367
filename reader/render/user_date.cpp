// SPDX-License-Identifier: MIT
#include "reader/render/user_date.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>

#include <qpsreader/qps_reader.h>
#include "reader/render/literal.h"
#include "reader/render/name_tables.h"

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

using Source = DatePiece::Source;
using Letters = DatePiece::Letters;

struct FieldRule {
  Source source;
  Letters letters = Letters::kAsTheyAre;
};

// What a row of qpsUSERDEFINE shows, by its field. An hour may be one of the dial, and a month a
// minute, by what else stands in the text.
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
    {Source::kMonth},
    {Source::kSecond},
    {Source::kYear},
    {Source::kShortYear},
}};
static_assert(std::all_of(std::begin(qpsUSERDEFINE), std::end(qpsUSERDEFINE),
                          [](const QPSUserDefine& row) { return row.field < kFieldRules.size(); }));

// For each first character, the rows that begin with it, row r as bit r. Most characters begin
// none.
constexpr std::array<std::uint32_t, 256> kRowsByFirst = [] {
  std::array<std::uint32_t, 256> rows{};
  for (std::size_t row = 0; row < QPSUserDefineRows; ++row) {
    rows[static_cast<unsigned char>(qpsUSERDEFINE[row].token[0])] |= 1U << row;
  }
  return rows;
}();

constexpr std::uint32_t kNoRow = QPSUserDefineRows;

// The first row whose token `text`, which is not empty, begins with.
std::uint32_t matchToken(std::string_view text) {
  std::uint32_t rows = kRowsByFirst[static_cast<unsigned char>(text.front())];
  for (; rows != 0; rows &= rows - 1) {
    const auto row = static_cast<std::uint32_t>(std::countr_zero(rows));
    const QPSUserDefine& define = qpsUSERDEFINE[row];
    if (text.starts_with({define.token, static_cast<std::size_t>(define.length)})) return row;
  }
  return kNoRow;
}

// Of "%.4d", "%.2d", "%.d" and "%s".
constexpr std::uint8_t minDigits(const char* format) {
  return format[1] == '.' && format[2] != 'd' ? static_cast<std::uint8_t>(format[2] - '0') : 1;
}

void appendName(TextBuffer& out, std::string_view name, Letters letters, SSHostServices* services) {
  if (letters == Letters::kAsTheyAre) {
    out.append(name);
    return;
  }
  char copy[16];  // the host converts it in place; the longest name has nine letters
  copy[name.copy(copy, sizeof copy - 1)] = '\0';
  const auto convert = letters == Letters::kUpper ? services->toUpperText : services->toLowerText;
  out.append(std::string_view(convert(services, copy)));
}

std::int32_t numberOf(Source source, const UserDateFields& fields) {
  const std::int32_t year = fields.date.year;
  switch (source) {
    case Source::kDay:
      return fields.date.day;
    case Source::kHour:
      return fields.time.hours % 24;  // midnight that was reached by rounding is hour 24
    case Source::kDialHour:
      return dialHour(fields.time.hours).hour;
    case Source::kMinute:
      return fields.time.minutes;
    case Source::kMonth:
      return fields.date.month;
    case Source::kSecond:
      return fields.time.seconds;
    case Source::kShortYear:
      return year >= 1900 && year <= 1999 ? year % 100 : year;
    default:
      return year;
  }
}

std::size_t weekdayOf(const UserDateFields& fields) {
  return static_cast<std::size_t>(weekdayNameIndex(fields.weekday, fields.nonNegative));
}

void appendPiece(TextBuffer& out, const DatePiece& piece, const UserDateFields& fields,
                 SSHostServices* services) {
  const auto month = static_cast<std::size_t>(fields.date.month);
  switch (piece.source) {
    case Source::kLiteral:
      out.append(piece.literal);
      break;
    case Source::kWeekdayName:
      appendName(out, weekdayNames[weekdayOf(fields)], piece.letters, services);
      break;
    case Source::kWeekdayAbbreviation:
      appendName(out, weekdayAbbreviations[weekdayOf(fields)], piece.letters, services);
      break;
    case Source::kMonthName:
      appendName(out, monthNames[month], piece.letters, services);
      break;
    case Source::kMonthAbbreviation:
      appendName(out, monthAbbreviations[month], piece.letters, services);
      break;
    case Source::kHalfDay:
      out.append(dialHour(fields.time.hours).pm ? "PM" : "AM");
      break;
    default:
      out.appendInteger(numberOf(piece.source, fields), piece.minDigits);
      break;
  }
}

}  // namespace

DateScanner::DateScanner(std::string_view text)
    : rest_(text.substr(0, UINT16_MAX)), dial_(rest_.find("AMPM") != std::string_view::npos) {}

std::optional<DatePiece> DateScanner::next() {
  if (rest_.empty()) return std::nullopt;
  if (rest_.front() == kQuote && !afterLiteral_) return takeQuoted();
  const std::uint32_t row = matchToken(rest_);
  return row == kNoRow ? takePlain() : takeToken(row);
}

DatePiece DateScanner::takeLiteral(std::size_t size) {
  const std::string_view literal = rest_.substr(0, size);
  rest_.remove_prefix(size);
  return {.source = Source::kLiteral, .literal = literal};
}

// 'a''b' is a'b: right after a literal even a quote is an ordinary character.
DatePiece DateScanner::takeQuoted() {
  rest_.remove_prefix(1);
  const DatePiece piece = takeLiteral(std::min(rest_.find(kQuote), rest_.size()));
  if (!rest_.empty()) rest_.remove_prefix(1);
  afterLiteral_ = true;
  return piece;
}

DatePiece DateScanner::takeToken(std::uint32_t row) {
  const QPSUserDefine& define = qpsUSERDEFINE[row];
  const FieldRule rule = kFieldRules[define.field];
  Source source = rule.source;
  if (source == Source::kMonth && afterHour_) source = Source::kMinute;
  if (source == Source::kHour && dial_) source = Source::kDialHour;
  rest_.remove_prefix(static_cast<std::size_t>(define.length));
  afterHour_ = rule.source == Source::kHour;
  afterLiteral_ = false;
  return {source, rule.letters, minDigits(define.format), {}};
}

DatePiece DateScanner::takePlain() {
  std::string_view after = rest_;
  do {
    after.remove_prefix(1);
  } while (!after.empty() && after.front() != kQuote && matchToken(after) == kNoRow);
  afterLiteral_ = false;
  return takeLiteral(rest_.size() - after.size());
}

DateFormat parseDateFormat(std::string_view text) {
  DateFormat format;
  format.isDate = text.starts_with('T');
  if (!format.isDate) return format;
  text.remove_prefix(1);
  format.others = DateScanner(text);
  while (format.keptPieces < DateFormat::kKeptPieces) {
    const std::optional<DatePiece> piece = format.others.next();
    if (!piece) break;
    format.pieces[format.keptPieces++] = *piece;
  }
  return format;
}

UserDateFields userDateFields(double serial) {
  return {qpsSerialToDate(serial), qpsTimeOfDay(serial), weekdayIndex(serial), !(serial < 0)};
}

bool qpsFormatUserDate(TextBuffer& out, const DateFormat& format, const UserDateFields& fields,
                       SSHostServices* services) {
  if (!format.isDate) return false;
  for (std::size_t i = 0; i < format.keptPieces; ++i)
    appendPiece(out, format.pieces[i], fields, services);
  if (format.keptPieces < DateFormat::kKeptPieces) return true;
  // A format's text may be ten times as long as what it shows.
  DateScanner others = format.others;
  while (!out.truncated()) {
    const std::optional<DatePiece> piece = others.next();
    if (!piece) break;
    appendPiece(out, *piece, fields, services);
  }
  return true;
}

}  // namespace qps
