// SPDX-License-Identifier: MIT
//
// What a form writes to, and the names of the forms. A form is one way to show a value. It returns
// its text when that is short, as most are; otherwise it returns what Rendering::deliver does.
#ifndef QPSREADER_FORMAT_RENDERING_H
#define QPSREADER_FORMAT_RENDERING_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <qpsreader/ss_item.h>
#include "reader/frame/item_text.h"
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

// Passed by value, in two registers.
struct Rendering {
  const QPSSheet& sheet;
  SSItemCell& cell;  // only its text and its alignment change

  std::uint32_t columnWidth() const { return sheet.columnWidths[cell.column - 1]; }

  // Gives the host a text of any length, cut if need be; none for an empty one.
  WordText deliver(std::string_view text) const {
    const std::size_t size = std::min(text.size(), kMostResultCharacters);
    if (size != 0) cell.text = qpsStrDup(sheet, {text.data(), size});
    return {};
  }
};

using Form = WordText (*)(Rendering, const QPSAppearance&, double value);

inline constexpr WordText kErrorMark{textWord("ERR")};

// Shows that the value does not fit or lies outside what the form can show.
inline WordText showOverflow(Rendering r) {
  constexpr std::uint8_t kOverflowAlignment = 28;
  r.cell.alignment = kOverflowAlignment;
  return WordText(textWord("*"));
}

// Forms for any value: numeric_forms.cpp, and the dates of codes 5 to 9 (date_forms.cpp).
WordText showGeneral(Rendering r, const QPSAppearance& appearance, double value);
WordText showBars(Rendering r, const QPSAppearance& appearance, double value);
WordText showFixed(Rendering r, const QPSAppearance& appearance, double value);
WordText showCurrency(Rendering r, const QPSAppearance& appearance, double value);
WordText showPercent(Rendering r, const QPSAppearance& appearance, double value);
WordText showComma(Rendering r, const QPSAppearance& appearance, double value);
WordText showDatedForm(Rendering r, const QPSAppearance& appearance, double value);

// Forms for finite values: numeric_forms.cpp, date_forms.cpp and, for the notebook's own formats,
// user_forms.cpp. A named date is the long date under a style named "Date", and General else.
WordText showScientific(Rendering r, const QPSAppearance& appearance, double value);
WordText showTime12WithSeconds(Rendering r, const QPSAppearance& appearance, double value);
WordText showTime12(Rendering r, const QPSAppearance& appearance, double value);
WordText showTime24WithSeconds(Rendering r, const QPSAppearance& appearance, double value);
WordText showTime24(Rendering r, const QPSAppearance& appearance, double value);
WordText showYear(Rendering r, const QPSAppearance& appearance, double value);
WordText showMonthAbbreviation(Rendering r, const QPSAppearance& appearance, double value);
WordText showShortNumericDate(Rendering r, const QPSAppearance& appearance, double value);
WordText showNamedDate(Rendering r, const QPSAppearance& appearance, double value);
WordText showLongDate(Rendering r, const QPSAppearance& appearance, double value);
WordText showUserDefined(Rendering r, const QPSAppearance& appearance, double value);

}  // namespace qps

#endif  // QPSREADER_FORMAT_RENDERING_H
