// SPDX-License-Identifier: MIT
#include <cmath>
#include <limits>

#include "format/rendering.h"
#include "render/number_text.h"

namespace qps {

namespace {

constexpr std::uint8_t kBarAlignment = 12;
constexpr std::size_t kMostBars = 127;
constexpr int kGeneralDecimals = 8;

// The size that counts for a cell whose font is unknown, or says 0.
constexpr std::uint32_t kDefaultFontSize = 10;

// How many characters the column holds: its width / 12 / the font's size, rounded to nearest,
// halves up. In integers, which give the same as doubles do: the quotient is either half a
// character exactly, which doubles hold, or at least 1/3060 away from it.
std::uint32_t widthInCharacters(const Rendering& r) {
  const QPSFont* font = r.appearance.font;
  const std::uint32_t size = font == nullptr || font->size == 0 ? kDefaultFontSize : font->size;
  return (r.columnWidth + 6 * size) / (12 * size);
}

void replaceByScientific(Rendering& r) {
  r.text.clear();
  appendScientificFallback(r.text, r.value);
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

// A form whose text was cut shows the General form's last resort instead.
void replaceIfCut(Rendering& r) {
  if (r.text.truncated()) replaceByScientific(r);
}

// Grouped digits between two marks; a negative value has marks of its own instead of a sign.
struct Marks {
  std::string_view before, after, beforeNegative, afterNegative;
};

void showGrouped(Rendering& r, const Marks& marks) {
  const bool negative = r.value < 0;
  r.text.append(negative ? marks.beforeNegative : marks.before);
  appendGrouped(r.text, negative ? -r.value : r.value, r.appearance.decimals);
  r.text.append(negative ? marks.afterNegative : marks.after);
  replaceIfCut(r);
}

}  // namespace

void showGeneral(Rendering& r) {
  const std::size_t width = widthInCharacters(r);
  if (isInt32(r.value)) {
    r.text.appendInteger(static_cast<std::int32_t>(r.value));
    if (r.text.size() > width) replaceByScientific(r);
    return;
  }
  qpsFormatTrimmed(r.text, r.value, kGeneralDecimals);
  if (!fitGeneral(r.text, width)) replaceByScientific(r);
}

void showBars(Rendering& r) {
  r.cell.alignment = kBarAlignment;
  const double magnitude = std::fabs(r.value);
  if (std::isnan(magnitude)) {
    r.text.append(kErrorMark);
  } else if (magnitude == 0) {
    r.text.append('.');
  } else if (magnitude > widthInCharacters(r) || magnitude > kMostBars) {
    showOverflow(r);
  } else {
    const char sign = r.value > 0 ? '+' : '-';
    for (int i = 0; i < magnitude; ++i)
      r.text.append(sign);
  }
}

void showFixed(Rendering& r) {
  r.text.appendFixed(r.value, r.appearance.decimals);
  replaceIfCut(r);
}

void showScientific(Rendering& r) {
  r.text.appendScientific(r.value, r.appearance.decimals);
  replaceIfCut(r);
}

void showCurrency(Rendering& r) {
  showGrouped(r, {"$", " ", "($", ") "});
}

void showComma(Rendering& r) {
  showGrouped(r, {"", " ", "(", ") "});
}

void showPercent(Rendering& r) {
  const double percent = r.value * 100.0;
  if (!std::isfinite(percent)) {
    replaceByScientific(r);
    return;
  }
  r.text.appendFixed(percent, r.appearance.decimals);
  r.text.append('%');
  replaceIfCut(r);
}

}  // namespace qps
