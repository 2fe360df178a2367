// SPDX-License-Identifier: MIT
#include "reader/render/user_date.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <span>

#include <qpsreader/qps_reader.h>
#include "reader/render/literal.h"
#include "reader/render/name_tables.h"
#include "reader/render/text_buffer.h"

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

char userDateBuffer[512];

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

// For what is longer than a word.
constexpr TextWord kNoWord{0, WordText::kMostCharacters + 1};

bool isWord(const TextWord& word) {
  return word.size != kNoWord.size;
}

TextWord numberWord(std::int32_t number, int minDigits) {
  const auto value = static_cast<std::uint32_t>(number);  // one below 0 is too large
  if (value < 100 && minDigits == 2) return twoDigits(value);
  if (value < 10'000 && minDigits == 4) return fourDigits(value);
  return value < kHundredMillion ? upToEightDigits(value, minDigits) : kNoWord;
}

std::size_t weekdayOf(const UserDateFields& fields) {
  return static_cast<std::size_t>(weekdayNameIndex(fields.weekday, fields.nonNegative));
}

bool isConverted(const DatePiece& piece) {
  return piece.letters != Letters::kAsTheyAre;
}

// What a piece shows, if that is one of the short things that most pieces show.
TextWord wordOf(const DatePiece& piece, const UserDateFields& fields) {
  switch (piece.source) {
    case Source::kLiteral:
      return piece.chars <= 8 ? TextWord{piece.characters, piece.chars} : kNoWord;
    case Source::kWeekdayAbbreviation:
      return isConverted(piece) ? kNoWord : kWeekdayWords[weekdayOf(fields)];
    case Source::kMonthAbbreviation:
      return isConverted(piece) ? kNoWord
                                : kMonthWords[static_cast<std::size_t>(fields.date.month)];
    case Source::kWeekdayName:
    case Source::kMonthName:
      return kNoWord;
    case Source::kHalfDay:
      return dialHour(fields.time.hours).pm ? textWord("PM") : textWord("AM");
    default:
      return numberWord(numberOf(piece.source, fields), piece.minDigits);
  }
}

// Whether wordOf gives a word, but for large numbers.
bool mayBeWord(const DatePiece& piece) {
  return isWord(wordOf(piece, {{1, 1, 1}, {1, 1, 1}, 1, true}));
}

bool showsTimeOrWeekday(const DatePiece& piece) {
  switch (piece.source) {
    case Source::kLiteral:
    case Source::kMonthName:
    case Source::kMonthAbbreviation:
    case Source::kDay:
    case Source::kMonth:
    case Source::kYear:
    case Source::kShortYear:
      return false;
    default:
      return true;
  }
}

class DatePrinter {
 public:
  DatePrinter(const UserDateFields& fields, SSHostServices* services, TextBuffer& out)
      : fields_(fields), services_(services), out_(out) {}

  void print(const DatePiece& piece, const DateScanner& scanner) {
    if (const TextWord word = wordOf(piece, fields_); isWord(word)) {
      out_.append(WordText(word));
      return;
    }
    const auto month = static_cast<std::size_t>(fields_.date.month);
    switch (piece.source) {
      case Source::kLiteral:
        out_.append(scanner.textOf(piece));
        break;
      case Source::kWeekdayName:
        appendName(out_, weekdayNames[weekdayOf(fields_)], piece.letters, services_);
        break;
      case Source::kWeekdayAbbreviation:
        appendName(out_, weekdayAbbreviations[weekdayOf(fields_)], piece.letters, services_);
        break;
      case Source::kMonthName:
        appendName(out_, monthNames[month], piece.letters, services_);
        break;
      case Source::kMonthAbbreviation:
        appendName(out_, monthAbbreviations[month], piece.letters, services_);
        break;
      default:
        out_.appendInteger(numberOf(piece.source, fields_), piece.minDigits);
        break;
    }
  }

 private:
  const UserDateFields& fields_;
  SSHostServices* services_;
  TextBuffer& out_;
};

DatePiece literalPiece(std::string_view text, std::size_t begin, std::size_t chars) {
  const std::uint64_t characters =
      chars <= 8 ? textWord({text.data() + begin, chars}).characters : 0;
  return {Source::kLiteral,
          Letters::kAsTheyAre,
          0,
          static_cast<std::uint16_t>(begin),
          static_cast<std::uint16_t>(chars),
          characters};
}

}  // namespace

DateScanner::DateScanner(std::string_view text)
    : text_(text.substr(0, UINT16_MAX)), dial_(text_.find("AMPM") != std::string_view::npos) {}

std::optional<DatePiece> DateScanner::next() {
  if (at_ >= text_.size()) return std::nullopt;
  if (text_[at_] == kQuote && !behindLiteral_) return takeQuoted();
  const std::uint32_t row = matchToken(text_.substr(at_));
  return row == kNoRow ? takePlain() : takeToken(row);
}

// 'a''b' is a'b: right behind a literal even a quote is an ordinary character.
DatePiece DateScanner::takeQuoted() {
  const std::size_t begin = at_ + 1;
  const std::size_t end = std::min(text_.find(kQuote, begin), text_.size());
  at_ = end + 1;
  behindLiteral_ = true;
  return literalPiece(text_, begin, end - begin);
}

DatePiece DateScanner::takeToken(std::uint32_t row) {
  const QPSUserDefine& define = qpsUSERDEFINE[row];
  const FieldRule rule = kFieldRules[define.field];
  Source source = rule.source;
  if (source == Source::kMonth && afterHour_) source = Source::kMinute;
  if (source == Source::kHour && dial_) source = Source::kDialHour;
  at_ += static_cast<std::size_t>(define.length);
  afterHour_ = rule.source == Source::kHour;
  behindLiteral_ = false;
  return {source, rule.letters, minDigits(define.format), 0, 0, 0};
}

DatePiece DateScanner::takePlain() {
  const std::size_t begin = at_;
  do {
    ++at_;
  } while (at_ < text_.size() && text_[at_] != kQuote && matchToken(text_.substr(at_)) == kNoRow);
  behindLiteral_ = false;
  return literalPiece(text_, begin, at_ - begin);
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
  const std::span pieces(format.pieces, format.keptPieces);
  format.isInWords =
      format.keptPieces < DateFormat::kKeptPieces && std::ranges::all_of(pieces, mayBeWord);
  format.usesOnlyDate = std::ranges::none_of(pieces, showsTimeOrWeekday);
  return format;
}

UserDateFields userDateFields(double serial) {
  return {qpsSerialToDate(serial), qpsTimeOfDay(serial), weekdayIndex(serial), !(serial < 0)};
}

WordText shortUserDate(const DateFormat& format, double serial) {
  if (!format.isInWords) return {};
  const UserDateFields fields = format.usesOnlyDate
                                    ? UserDateFields{qpsSerialToDate(serial), {}, 0, true}
                                    : userDateFields(serial);
  WordText text;
  for (std::size_t i = 0; i < format.keptPieces; ++i) {
    const TextWord word = wordOf(format.pieces[i], fields);
    if (text.size() + word.size > WordText::kMostCharacters) return {};
    text.append(word);
  }
  return text;
}

std::optional<std::string_view> qpsFormatUserDate(const DateFormat& format,
                                                  const UserDateFields& fields,
                                                  SSHostServices* services) {
  if (!format.isDate) return std::nullopt;
  TextBuffer out(userDateBuffer);
  DatePrinter printer(fields, services, out);
  for (std::size_t i = 0; i < format.keptPieces; ++i)
    printer.print(format.pieces[i], format.others);
  if (format.keptPieces == DateFormat::kKeptPieces) {
    // A format's text may be ten times as long as a result.
    DateScanner others = format.others;
    while (!out.truncated()) {
      const std::optional<DatePiece> piece = others.next();
      if (!piece) break;
      printer.print(*piece, others);
    }
  }
  return std::string_view(out.c_str(), out.size());
}

}  // namespace qps
