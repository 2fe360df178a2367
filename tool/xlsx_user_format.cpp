// SPDX-License-Identifier: MIT
#include "tool/xlsx_user_format.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "tool/utf8.h"

namespace qps {
namespace {

constexpr auto kNone = std::string_view::npos;
constexpr std::size_t kMostDecimals = 30;  // that spreadsheet programs load

// The characters of a format's text, those in quotes told apart. Adjacent literal ones come as one.
struct Piece {
  bool isQuoted = false;
  std::string_view text;  // one character unless it is quoted
};

std::vector<Piece> piecesOf(std::string_view text) {
  std::vector<Piece> pieces;
  while (!text.empty()) {
    if (text[0] != '\'') {
      pieces.push_back({false, text.substr(0, 1)});
      text.remove_prefix(1);
      continue;
    }
    const std::size_t end = std::min(text.find('\'', 1), text.size());
    if (end > 1) pieces.push_back({true, text.substr(1, end - 1)});
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return pieces;
}

bool isDigitMark(const Piece& piece) {
  return !piece.isQuoted && (piece.text == "0" || piece.text == "9");
}

// One section of a number format.
class NumberSection {
 public:
  NumberSection(std::string_view text, bool isNegative, const Decoder& decoder)
      : pieces_(piecesOf(text)), isNegative_(isNegative), decoder_(decoder) {
    const auto isPoint = [](const Piece& piece) { return !piece.isQuoted && piece.text == "."; };
    point_ = static_cast<std::size_t>(std::ranges::find_if(pieces_, isPoint) - pieces_.begin());
    for (std::size_t i = 0; i < pieces_.size(); ++i)
      if (isDigitMark(pieces_[i])) ++(i < point_ ? integerMarks_ : fractionMarks_);
  }

  std::optional<std::string> translate();
  double leastMagnitude() const { return leastMagnitude_; }

 private:
  std::string percent() const;
  std::string exponent() const;
  std::size_t precision() const;
  bool addPiece(std::size_t index);
  bool addGroup();
  void addDigit(bool isZero);
  bool addLiteral(std::string_view bytes);

  std::vector<Piece> pieces_;
  bool isNegative_;
  const Decoder& decoder_;
  std::size_t point_ = 0;  // its index; the number of pieces when there is none
  std::size_t integerMarks_ = 0;
  std::size_t fractionMarks_ = 0;

  std::string result_;
  std::size_t marksSeen_ = 0;
  std::size_t groups_ = 0;
  bool isSplit_ = false;  // by a text between its digits
  double leastMagnitude_ = 0;
  bool pastPoint_ = false;
  bool alwaysDigit_ = false;  // from the first "0" on no digit is left out
  bool alwaysText_ = false;   // whether the output surely holds something
};

std::optional<std::string> NumberSection::translate() {
  if (fractionMarks_ > kMostDecimals || precision() > kMostDecimals) return std::nullopt;
  for (const Piece& piece : pieces_) {
    if (piece.isQuoted) continue;
    if (piece.text == "%") return percent();
    if (piece.text == "E") return exponent();
  }
  for (std::size_t i = 0; i < pieces_.size(); ++i)
    if (!addPiece(i)) return std::nullopt;
  // A workbook separates all groups of three or none.
  const std::size_t wanted = integerMarks_ == 0 ? 0 : (integerMarks_ - 1) / 3;
  if (groups_ != 0 && (groups_ != wanted || isSplit_)) return std::nullopt;
  return result_;
}

// These two forms show nothing but the number, with its sign.
std::string NumberSection::percent() const {
  return (isNegative_ ? "-" : "") + fixedPattern(fractionMarks_) + "%";
}

// The number of characters between the point and the last E.
std::size_t NumberSection::precision() const {
  std::size_t precision = 0;
  std::size_t distance = 0;
  for (std::size_t i = point_ + 1; i < pieces_.size(); ++i) {
    if (!pieces_[i].isQuoted && pieces_[i].text == "E") precision = distance;
    distance += pieces_[i].isQuoted ? pieces_[i].text.size() + 2 : 1;
  }
  return precision == 0 ? 2 : precision;
}

std::string NumberSection::exponent() const {
  return (isNegative_ ? "-" : "") + fixedPattern(precision()) + "E+00";
}

bool NumberSection::addPiece(std::size_t index) {
  const Piece& piece = pieces_[index];
  if (piece.isQuoted) return addLiteral(piece.text);
  switch (piece.text[0]) {
    case '0':
    case '9':
      addDigit(piece.text[0] == '0');
      return true;
    case '.':
      if (pastPoint_) return false;
      if (integerMarks_ == 0) result_ += '#';
      result_ += '.';
      pastPoint_ = alwaysDigit_ = alwaysText_ = true;
      return true;
    case ',':
      if (!pastPoint_) return addGroup();
      break;
    case '+':
    case '-':
    case ';':
      return true;
    default:
      break;
  }
  if (alwaysText_) return addLiteral(piece.text);
  return marksSeen_ == 0;  // dropped before everything; after an optional digit it depends on that
}

bool NumberSection::addGroup() {
  const std::size_t left = integerMarks_ - marksSeen_;
  if (marksSeen_ == 0 || left == 0 || left % 3 != 0) return false;
  // Behind a text the notebook shows the separator of digits that are left out too.
  if (alwaysText_ && !alwaysDigit_)
    leastMagnitude_ = std::max(leastMagnitude_, std::pow(10.0, static_cast<double>(left)));
  result_ += ',';
  ++groups_;
  return true;
}

void NumberSection::addDigit(bool isZero) {
  alwaysDigit_ = alwaysDigit_ || isZero;
  alwaysText_ = alwaysText_ || isZero;
  result_ += alwaysDigit_ ? '0' : '#';
  if (!pastPoint_) ++marksSeen_;
}

bool NumberSection::addLiteral(std::string_view bytes) {
  isSplit_ = isSplit_ || (marksSeen_ > 0 && marksSeen_ < integerMarks_);
  const auto quoted = quotedLiteral(bytes, decoder_);
  if (!quoted) return false;
  result_ += *quoted;
  alwaysText_ = true;
  return true;
}

std::vector<std::string_view> sectionsOf(std::string_view text) {
  std::vector<std::string_view> sections;
  for (std::size_t end; (end = text.find(';')) != kNone; text.remove_prefix(end + 1))
    sections.push_back(text.substr(0, end));
  sections.push_back(text);
  return sections;
}

// What a token of a date format becomes; null where a workbook has no such thing.
struct Token {
  std::string_view name;
  const char* format;
  enum Kind { kDate, kMonth, kHour, kSecond, kHalfDay, kShortYear } kind;
};

// From the longest to the shortest; the first that fits counts.
constexpr Token kTokens[] = {
    {"WEEKDAY", nullptr, Token::kDate}, {"Weekday", "dddd", Token::kDate},
    {"weekday", nullptr, Token::kDate}, {"MONTH", nullptr, Token::kDate},
    {"Month", "mmmm", Token::kDate},    {"month", nullptr, Token::kDate},
    {"AMPM", "AM/PM", Token::kHalfDay}, {"WDAY", nullptr, Token::kDate},
    {"Wday", "ddd", Token::kDate},      {"wday", nullptr, Token::kDate},
    {"YYYY", "yyyy", Token::kDate},     {"MON", nullptr, Token::kDate},
    {"Mon", "mmm", Token::kDate},       {"mon", nullptr, Token::kDate},
    {"DD", "dd", Token::kDate},         {"HH", "hh", Token::kHour},
    {"MM", "mm", Token::kMonth},        {"SS", "ss", Token::kSecond},
    {"YY", nullptr, Token::kShortYear}, {"D", "d", Token::kDate},
    {"H", "h", Token::kHour},           {"M", "m", Token::kMonth},
    {"S", "s", Token::kSecond},
};

class DateFormat {
 public:
  DateFormat(std::string_view text, const Decoder& decoder) : text_(text), decoder_(decoder) {}

  std::optional<XlsxUserDate> translate();

 private:
  bool walk();
  bool addToken(const Token& token);
  bool addMonthOrMinute(const Token& token);
  bool flushLiteral();

  std::string_view text_;
  const Decoder& decoder_;
  std::string literal_;  // not written yet
  std::string result_, resultIn1900s_;
  std::array<Token::Kind, 2> last_ = {Token::kDate,
                                      Token::kDate};  // the last token, and the one before
  bool lastIsMonth_ = false;
  bool hasShortYear_ = false, hasHalfDay_ = false;
  bool showsDate_ = false, showsTime_ = false;
};

std::optional<XlsxUserDate> DateFormat::translate() {
  if (!walk()) return std::nullopt;
  // "AMPM" turns the hours to twelve in quotes too.
  const bool shows12Hours = text_.find("AMPM") != kNone;
  if (shows12Hours != hasHalfDay_ || !(showsDate_ || showsTime_)) return std::nullopt;
  return XlsxUserDate{hasShortYear_ ? byCentury(resultIn1900s_, result_) : result_, showsDate_,
                      showsTime_};
}

bool DateFormat::walk() {
  for (std::string_view rest = text_; !rest.empty();) {
    if (rest[0] == '\'') {
      const std::size_t end = std::min(rest.find('\'', 1), rest.size());
      literal_ += rest.substr(1, end - 1);
      rest.remove_prefix(std::min(end + 1, rest.size()));
      // A second quote straight after the closing one is a plain character.
      if (rest.starts_with('\'')) {
        literal_ += '\'';
        rest.remove_prefix(1);
      }
      continue;
    }
    const auto* const token = std::ranges::find_if(
        kTokens, [rest](const Token& candidate) { return rest.starts_with(candidate.name); });
    if (token == std::end(kTokens)) {
      literal_ += rest[0];
      rest.remove_prefix(1);
      continue;
    }
    if (!addToken(*token)) return false;
    rest.remove_prefix(token->name.size());
  }
  return flushLiteral();
}

bool DateFormat::addToken(const Token& token) {
  if (!flushLiteral()) return false;
  if (token.kind == Token::kMonth) {
    if (!addMonthOrMinute(token)) return false;
  } else {
    // Before seconds a workbook takes a month for minutes.
    if (token.kind == Token::kSecond && lastIsMonth_) return false;
    lastIsMonth_ = false;
    const bool isTime = token.kind != Token::kDate && token.kind != Token::kShortYear;
    (isTime ? showsTime_ : showsDate_) = true;
    hasHalfDay_ = hasHalfDay_ || token.kind == Token::kHalfDay;
    hasShortYear_ = hasShortYear_ || token.kind == Token::kShortYear;
    if (token.kind == Token::kShortYear) {
      result_ += "yyyy";
      resultIn1900s_ += "yy";
    } else if (token.format == nullptr) {
      return false;
    } else {
      result_ += token.format;
      resultIn1900s_ += token.format;
    }
  }
  last_ = {token.kind, last_[0]};
  return true;
}

// Minutes straight after an hour; in a workbook perhaps also after an hour and something between.
bool DateFormat::addMonthOrMinute(const Token& token) {
  const bool isMinute = last_[0] == Token::kHour;
  if (!isMinute && last_[0] == Token::kHalfDay && last_[1] == Token::kHour) return false;
  lastIsMonth_ = !isMinute;
  (isMinute ? showsTime_ : showsDate_) = true;
  result_ += token.format;
  resultIn1900s_ += token.format;
  return true;
}

bool DateFormat::flushLiteral() {
  if (literal_.empty()) return true;
  const auto quoted = quotedLiteral(literal_, decoder_);
  if (!quoted) return false;
  result_ += *quoted;
  resultIn1900s_ += *quoted;
  literal_.clear();
  return true;
}

}  // namespace

std::string fixedPattern(std::size_t decimals) {
  return decimals == 0 ? "0" : "0." + std::string(decimals, '0');
}

std::optional<std::string> quotedLiteral(std::string_view bytes, const Decoder& decoder) {
  std::string result = "\"";
  const std::string utf8 = decoder.decode(bytes);
  for (std::string_view rest = utf8; !rest.empty();) {
    const Decoded first = firstCharacter(rest);
    const bool isControl = first.character < 0x20 || first.character == 0x7F;
    if (isControl || first.character >= 0xFFFE) return std::nullopt;
    result += first.character == '"' ? R"("\"")" : rest.substr(0, first.size);
    rest.remove_prefix(first.size);
  }
  return result + '"';
}

std::string byCentury(const std::string& in1900s, const std::string& later) {
  return "[<36526]" + in1900s + ";" + later;
}

std::optional<XlsxUserNumber> xlsxUserNumber(std::string_view text, const Decoder& decoder) {
  const auto sections = sectionsOf(text);
  if (sections.size() > 3) return XlsxUserNumber{";;;"};
  std::vector<std::string> results;
  double leastMagnitude = 0;
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const bool isNegative = i > 0 && i + 1 == sections.size();
    results.emplace_back();
    if (!sections[i].starts_with('N')) continue;  // shows nothing
    NumberSection section(sections[i].substr(1), isNegative, decoder);
    const auto result = section.translate();
    if (!result) return std::nullopt;
    results.back() = *result;
    leastMagnitude = std::max(leastMagnitude, section.leastMagnitude());
  }
  std::string joined = results[0];
  if (results.size() == 1 && joined.empty()) return std::nullopt;  // that would be the general form
  if (results.size() > 1) joined += ";" + results.back();          // negative ones come second
  if (results.size() > 2) joined += ";" + results[1];
  return XlsxUserNumber{joined, leastMagnitude};
}

std::optional<XlsxUserDate> xlsxUserDate(std::string_view text, const Decoder& decoder) {
  return DateFormat(text.substr(1), decoder).translate();
}

}  // namespace qps
