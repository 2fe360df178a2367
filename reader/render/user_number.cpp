// SPDX-License-Identifier: MIT
#include "reader/render/user_number.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "reader/render/literal.h"
#include "reader/render/number_text.h"

namespace qps {
namespace {

// One walk over a section with placeholders, writing a number's digits where they stand.
//
// The number is printed with as many decimals as there are placeholders after the point. Zeros
// fill it up before the point when the section has more placeholders there than the number has
// digits; when it has fewer, the first of them takes all the digits that have none of their own.
class DigitWalk {
 public:
  DigitWalk(const NumberSection& section, std::string_view number, TextBuffer& out)
      : out_(out),
        number_(number),
        wholeLeft_(static_cast<int>(std::min(number.find('.'), number.size()))),
        excess_(std::max(wholeLeft_ - section.integerPlaceholders, 0)),
        zerosLeft_(std::max(section.integerPlaceholders - wholeLeft_, 0)),
        wholeIsPlaced_(section.integerPlaceholders != 0),
        grouping_(section.grouping),
        signChars_(out.size()) {}

  void run(std::string_view rest) {
    while (!rest.empty()) {
      const char character = rest.front();
      rest.remove_prefix(1);
      switch (character) {
        case '0':
        case '9':
          placeDigit(character);
          break;
        case '.':
          placePoint();
          break;
        case kQuote:
          out_.append(takeLiteral(rest));
          break;
        case '+':
        case '-':
        case ';':
          break;
        default:
          // The sign is no text that a separator could follow: N9,999 shows -5, not -,5.
          if (out_.size() > signChars_) out_.append(character);
      }
    }
  }

 private:
  void placeDigit(char placeholder) {
    writeExcess();
    const bool isZero = zerosLeft_ > 0 || (!number_.empty() && number_.front() == '0');
    if (!pastPoint_ && placeholder == '9' && isZero && !digitWritten_) {
      takeDigit();
    } else {
      writeDigit();
    }
  }

  // The digits that have no placeholder. The section's own "," stands before its last three
  // placeholders, so no separator is written there.
  void writeExcess() {
    for (; excess_ > 0; --excess_) {
      writeDigit();
      --wholeLeft_;
      if (grouping_ && wholeLeft_ > 3 && wholeLeft_ % 3 == 0) out_.append(',');
    }
  }

  void placePoint() {
    if (!pastPoint_ && !wholeIsPlaced_) writeUnplacedWhole();
    pastPoint_ = true;
    if (!number_.empty()) number_.remove_prefix(1);
    out_.append('.');
  }

  // A section without placeholders before its point shows the whole part there, unless it is 0.
  void writeUnplacedWhole() {
    const std::string_view whole = number_.substr(0, static_cast<std::size_t>(wholeLeft_));
    number_.remove_prefix(whole.size());
    excess_ = 0;
    if (whole == "0") return;
    if (grouping_) {
      qpsInsertThousands(out_, whole);
    } else {
      out_.append(whole);
    }
    digitWritten_ = true;
  }

  // A digit that the number does not have (a section with two points asks for one) is not written.
  void writeDigit() {
    if (zerosLeft_ == 0 && number_.empty()) return;
    out_.append(takeDigit());
    digitWritten_ = true;
  }

  char takeDigit() {
    if (zerosLeft_ > 0) {
      --zerosLeft_;
      return '0';
    }
    const char digit = number_.front();
    number_.remove_prefix(1);
    return digit;
  }

  TextBuffer& out_;
  std::string_view number_;  // what is left of its text
  int wholeLeft_;            // digits before the point, while there are some in excess
  int excess_;               // digits before the point that have no placeholder
  int zerosLeft_;            // zeros still to come before the number
  bool wholeIsPlaced_;
  bool grouping_;
  std::size_t signChars_;
  bool pastPoint_ = false;
  bool digitWritten_ = false;
};

void renderDigits(const NumberSection& section, bool minus, double magnitude, TextBuffer& out) {
  if (minus) out.append('-');
  if (magnitude >= section.plainFrom) {
    out.append(section.prefix);
    out.appendFixed(magnitude, section.fractionPlaceholders,
                    section.grouping ? Separators::kThousands : Separators::kNone);
    out.append(section.suffix);
    return;
  }
  char area[kMostUserNumberChars + 1];
  TextBuffer number(area);
  number.appendFixed(magnitude, section.fractionPlaceholders);
  DigitWalk(section, number.view(), out).run(section.text);
}

void renderPercent(const NumberSection& section, double value, TextBuffer& out) {
  const double percent = value * 100.0;
  if (!std::isfinite(percent)) {
    appendScientificFallback(out, value);
    return;
  }
  out.appendFixed(percent, section.fractionPlaceholders);
  out.append('%');
}

// Whether the placeholders before the point stand as a grouped number does (9,999 or 99,999,990),
// or, without grouping, one by one.
bool isPlainWhole(std::string_view whole, bool grouping) {
  constexpr std::size_t kGroupChars = 4;
  if (!grouping) return whole.find(',') == std::string_view::npos;
  if (whole.size() <= kGroupChars || whole.front() == ',') return false;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    const bool separated = (whole.size() - i) % kGroupChars == 0;
    if (separated != (whole[i] == ',')) return false;
  }
  return true;
}

// The least magnitude for which placeholders that are plain show just the number: it has a digit
// for each of them from the first "0" on, and for all of them when every separator shows.
double leastPlain(std::string_view whole, bool everySeparatorShows) {
  constexpr auto kMostDigits = 16;
  std::string_view shown = whole;
  shown.remove_prefix(std::min(whole.find('0'), whole.size()));
  const std::string_view needed = everySeparatorShows ? whole : shown;
  const auto digits = std::count_if(needed.begin(), needed.end(), [](char c) { return c != ','; });
  if (digits > kMostDigits) return std::numeric_limits<double>::infinity();
  if (digits == 1 && !shown.empty()) return 0;
  double least = 1;
  for (auto i = digits; i > 1; --i)
    least *= 10;
  return least;
}

// Fills in the plain form of a section that has one, and leaves all others to the walk.
void findPlainForm(NumberSection& section) {
  std::string_view rest = section.text;
  // What stands before the first literal or placeholder is dropped.
  rest.remove_prefix(std::min(rest.find_first_of("'09,."), rest.size()));
  std::string_view prefix;
  if (rest.starts_with(kQuote)) {
    rest.remove_prefix(1);
    prefix = takeLiteral(rest);
  }
  const std::string_view whole = rest.substr(0, rest.find_first_not_of("09,"));
  rest.remove_prefix(whole.size());
  if (whole.empty() || !isPlainWhole(whole, section.grouping)) return;
  if (rest.starts_with('.')) {
    rest.remove_prefix(1);
    const std::size_t decimals = std::min(rest.find_first_not_of("09"), rest.size());
    if (decimals == 0) return;  // "0." shows a point that the number does not have
    rest.remove_prefix(decimals);
  }
  std::string_view suffix = rest;
  if (rest.starts_with(kQuote)) {
    rest.remove_prefix(1);
    suffix = takeLiteral(rest);
    if (!rest.empty()) return;
  }
  if (rest.find_first_of("09.+-;'") != std::string_view::npos) return;

  section.plainFrom = leastPlain(whole, section.grouping && !prefix.empty());
  section.prefix = prefix;
  section.suffix = suffix;
}

}  // namespace

NumberSection parseNumberSection(std::string_view text) {
  using Form = NumberSection::Form;
  NumberSection section;
  if (text.empty() || text.front() != 'N') return section;
  text.remove_prefix(1);
  section.text = text.substr(0, kMostUserNumberChars - 1);
  section.form = Form::kDigits;

  std::string_view rest = section.text;
  std::size_t sincePoint = 0;  // the size of `rest` after the first point
  bool pastPoint = false;
  while (!rest.empty()) {
    const char character = rest.front();
    rest.remove_prefix(1);
    switch (character) {
      case kQuote:
        takeLiteral(rest);
        break;
      case '0':
      case '9':
        ++(pastPoint ? section.fractionPlaceholders : section.integerPlaceholders);
        break;
      case ',':
        section.grouping |= !pastPoint;
        break;
      case '.':
        if (!pastPoint) sincePoint = rest.size();
        pastPoint = true;
        break;
      case '%':
        if (section.form == Form::kDigits) section.form = Form::kPercent;
        break;
      case 'E':
        if (section.form == Form::kDigits) section.form = Form::kScientific;
        if (pastPoint)
          section.exponentPrecision = static_cast<std::int16_t>(sincePoint - rest.size() - 1);
        break;
      default:
        break;
    }
  }
  if (section.form == Form::kDigits) findPlainForm(section);
  return section;
}

bool qpsFormatUserNumber(TextBuffer& out, const NumberSection& section, std::uint32_t formatSection,
                         double magnitude, bool nonNegative) {
  constexpr std::uint32_t kNegativeSection = 2;
  constexpr int kDefaultPrecision = 2;
  const double value = nonNegative ? magnitude : -magnitude;
  switch (section.form) {
    case NumberSection::Form::kNone:
      return false;
    case NumberSection::Form::kPercent:
      renderPercent(section, value, out);
      break;
    case NumberSection::Form::kScientific:
      out.appendScientific(
          value, section.exponentPrecision == 0 ? kDefaultPrecision : section.exponentPrecision);
      break;
    case NumberSection::Form::kDigits:
      renderDigits(section, !nonNegative && formatSection < kNegativeSection, magnitude, out);
      break;
  }
  return true;
}

}  // namespace qps
