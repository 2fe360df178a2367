// SPDX-License-Identifier: MIT
//
// The forms by name, and what a form hands over. A form is one way to show a value: it returns the
// cell's text, a block from the sheet's itemAlloc that is the host's at once, or null for none.
#ifndef QPSREADER_FORMAT_RENDERING_H
#define QPSREADER_FORMAT_RENDERING_H

#include <cstddef>
#include <cstdint>

#include <qpsreader/ss_item.h>
#include "reader/frame/qps_sheet.h"
#include "reader/render/text_buffer.h"

namespace qps {

// The display text of a cell has at most so many characters.
inline constexpr std::size_t kMostResultCharacters = 127;

// A text that may be too long for a WordText.
class ResultText : public TextBuffer {
 public:
  ResultText() : TextBuffer(area_) {}

 private:
  char area_[kMostResultCharacters + 1];
};

// The cell that a form works for. Passed by value, in two registers.
struct Rendering {
  const QPSSheet& sheet;
  SSItemCell& cell;  // only its alignment changes

  std::uint32_t columnWidth() const { return sheet.columnWidths[cell.column - 1]; }
};

using Form = char* (*)(Rendering, const QPSAppearance&, double value);

// Hands a finished text over; none for an empty one.
char* deliver(Rendering r, WordText text);
char* deliver(Rendering r, const TextBuffer& text);

inline constexpr WordText kErrorMark{textWord("ERR")};
inline constexpr WordText overflowMark{textWord("*")};

// Shows that the value does not fit or lies outside what the form can show.
inline char* showOverflow(Rendering r) {
  constexpr std::uint8_t kOverflowAlignment = 28;
  r.cell.alignment = kOverflowAlignment;
  return deliver(r, overflowMark);
}

// Forms for any value: numeric_forms.cpp, and the dates of codes 5 to 9 (date_forms.cpp).
char* showGeneral(Rendering r, const QPSAppearance& appearance, double value);
char* showBars(Rendering r, const QPSAppearance& appearance, double value);
char* showFixed(Rendering r, const QPSAppearance& appearance, double value);
char* showCurrency(Rendering r, const QPSAppearance& appearance, double value);
char* showPercent(Rendering r, const QPSAppearance& appearance, double value);
char* showComma(Rendering r, const QPSAppearance& appearance, double value);
char* showDatedForm(Rendering r, const QPSAppearance& appearance, double value);

// Forms for finite values: numeric_forms.cpp, date_forms.cpp and, for the notebook's own formats,
// user_forms.cpp. A named date is the long date under a style named "Date", and General else.
char* showScientific(Rendering r, const QPSAppearance& appearance, double value);
char* showTime12WithSeconds(Rendering r, const QPSAppearance& appearance, double value);
char* showTime12(Rendering r, const QPSAppearance& appearance, double value);
char* showTime24WithSeconds(Rendering r, const QPSAppearance& appearance, double value);
char* showTime24(Rendering r, const QPSAppearance& appearance, double value);
char* showYear(Rendering r, const QPSAppearance& appearance, double value);
char* showMonthAbbreviation(Rendering r, const QPSAppearance& appearance, double value);
char* showShortNumericDate(Rendering r, const QPSAppearance& appearance, double value);
char* showNamedDate(Rendering r, const QPSAppearance& appearance, double value);
char* showLongDate(Rendering r, const QPSAppearance& appearance, double value);
char* showUserDefined(Rendering r, const QPSAppearance& appearance, double value);

}  // namespace qps

#endif  // QPSREADER_FORMAT_RENDERING_H
