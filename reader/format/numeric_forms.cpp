// SPDX-License-Identifier: MIT
#include <cmath>
#include <limits>

#include "reader/format/rendering.h"
#include "reader/render/number_text.h"

namespace qps {

namespace {

constexpr std::uint8_t kBarAlignment = 12;
constexpr std::size_t kMostBars = 127;
constexpr int kGeneralDecimals = 8;

// The size that counts for a cell whose font is unknown, or says 0.
constexpr std::uint32_t kDefaultFontSize = 10;

std::uint32_t fontSize(const QPSAppearance& appearance) {
  const QPSFont* font = appearance.font;
  return font == nullptr || font->shown.size == 0 ? kDefaultFontSize : font->shown.size;
}

// How many characters the column holds: its width / 12 / the font's size, rounded to nearest,
// halves up. In integers, which give the same as doubles do: the quotient is either half a
// character exactly, which doubles hold, or at least 1/3060 away from it.
std::uint32_t widthInCharacters(Rendering r, const QPSAppearance& appearance) {
  const std::uint32_t size = fontSize(appearance);
  return (r.columnWidth() + 6 * size) / (12 * size);
}

// Whether the column holds `characters`, without a division.
bool fits(Rendering r, const QPSAppearance& appearance, std::size_t characters) {
  const std::size_t size = fontSize(appearance);
  return r.columnWidth() + 6 * size >= 12 * size * characters;
}

char* showScientificFallback(Rendering r, double value) {
  ResultText text;
  appendScientificFallback(text, value);
  return deliver(r, text);
}

bool isInt32(double value) {
  return value >= std::numeric_limits<std::int32_t>::min() &&
         value <= std::numeric_limits<std::int32_t>::max() &&
         static_cast<std::int32_t>(value) == value;
}

// Fits a text with decimals into `width` characters by cutting decimals, never integer digits.
// False when that is not possible.
bool fitGeneral(TextBuffer& text, std::size_t width) {
  const std::string_view digits = text.view();
  if (width == 0 || text.truncated() || digits == "0" || digits == "-0") return false;
  const std::size_t point = digits.find('.');
  if (width == 1) {
    if (point != 1) return false;
    text.truncateTo(1);
    return true;
  }
  if (point == std::string_view::npos) return digits.size() <= width;
  if (digits.size() <= width - 1) return true;
  if (point > width - 1) return false;
  text.truncateTo(width - 1);
  return true;
}

// A text, unless it was cut: then the General form's last resort.
char* showLong(Rendering r, double value, const ResultText& text) {
  return text.truncated() ? showScientificFallback(r, value) : deliver(r, text);
}

// What stands around grouped digits; a negative value has marks of its own instead of a sign.
struct Marks {
  TextWord before, after;
};

// Of -0.0 too the sign shows: it is not below 0.
double magnitudeOf(double value) {
  return value < 0 ? -value : value;
}

// The forms of digits have two functions each, one for the few texts that are longer than a
// WordText: its area on the stack would cost every cell.
[[gnu::noinline]] char* showLongGrouped(Rendering r, double value, int decimals,
                                        const Marks& marks) {
  if (!std::isfinite(value)) return deliver(r, kErrorMark);
  ResultText text;
  text.append(WordText(marks.before));
  appendGrouped(text, magnitudeOf(value), decimals);
  text.append(WordText(marks.after));
  return showLong(r, value, text);
}

char* showGrouped(Rendering r, const QPSAppearance& appearance, double value, const Marks& marks) {
  WordText text(marks.before);
  if (appendShortFixed(text, magnitudeOf(value), appearance.decimals, Separators::kThousands,
                       marks.after))
    return deliver(r, text);
  return showLongGrouped(r, value, appearance.decimals, marks);
}

// `value` is what the digits say of the cell's value.
[[gnu::noinline]] char* showLongDecimal(Rendering r, double cellValue, double value, int decimals,
                                        TextWord mark) {
  if (!std::isfinite(cellValue)) return deliver(r, kErrorMark);
  if (!std::isfinite(value)) return showScientificFallback(r, cellValue);
  ResultText text;
  text.appendFixed(value, decimals);
  text.append(WordText(mark));
  return showLong(r, cellValue, text);
}

// Digits with a sign, and a mark after them.
char* showDecimal(Rendering r, const QPSAppearance& appearance, double cellValue, double value,
                  TextWord mark) {
  WordText text;
  if (appendShortFixed(text, value, appearance.decimals, Separators::kNone, mark))
    return deliver(r, text);
  return showLongDecimal(r, cellValue, value, appearance.decimals, mark);
}

}  // namespace

char* showGeneral(Rendering r, const QPSAppearance& appearance, double value) {
  if (isInt32(value)) {
    const WordText text = integerText(static_cast<std::int32_t>(value));
    return fits(r, appearance, text.size()) ? deliver(r, text) : showScientificFallback(r, value);
  }
  if (!std::isfinite(value)) return deliver(r, kErrorMark);
  char area[kMostResultCharacters + 1 + kGeneralDecimals + 1];  // what is trimmed does not count
  TextBuffer text(area);
  qpsFormatTrimmed(text, value, kGeneralDecimals);
  if (!fitGeneral(text, widthInCharacters(r, appearance))) return showScientificFallback(r, value);
  return deliver(r, text);
}

char* showBars(Rendering r, const QPSAppearance& appearance, double value) {
  r.cell.alignment = kBarAlignment;
  const double magnitude = std::fabs(value);
  if (std::isnan(magnitude)) return deliver(r, kErrorMark);
  if (magnitude == 0) return deliver(r, WordText(textWord(".")));
  if (magnitude > widthInCharacters(r, appearance) || magnitude > kMostBars) return showOverflow(r);
  const char sign = value > 0 ? '+' : '-';
  ResultText bars;
  for (int i = 0; i < magnitude; ++i)
    bars.append(sign);
  return deliver(r, bars);
}

char* showFixed(Rendering r, const QPSAppearance& appearance, double value) {
  return showDecimal(r, appearance, value, value, {});
}

char* showScientific(Rendering r, const QPSAppearance& appearance, double value) {
  ResultText text;
  text.appendScientific(value, appearance.decimals);
  return showLong(r, value, text);
}

char* showCurrency(Rendering r, const QPSAppearance& appearance, double value) {
  constexpr Marks kMarks[] = {{textWord("$"), textWord(" ")}, {textWord("($"), textWord(") ")}};
  return showGrouped(r, appearance, value, kMarks[value < 0 ? 1 : 0]);
}

char* showComma(Rendering r, const QPSAppearance& appearance, double value) {
  constexpr Marks kMarks[] = {{{}, textWord(" ")}, {textWord("("), textWord(") ")}};
  return showGrouped(r, appearance, value, kMarks[value < 0 ? 1 : 0]);
}

char* showPercent(Rendering r, const QPSAppearance& appearance, double value) {
  return showDecimal(r, appearance, value, value * 100.0, textWord("%"));
}

}  // namespace qps
