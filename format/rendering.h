// SPDX-License-Identifier: MIT
//
// What a form works on, and the names of the forms. A form is one way to show a value. It returns
// its text when that is short, as most are; otherwise it returns what Rendering::deliver does.
#ifndef QPSREADER_FORMAT_RENDERING_H
#define QPSREADER_FORMAT_RENDERING_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "items/ss_item.h"
#include "reader/item_text.h"
#include "reader/qps_sheet.h"
#include "render/text_buffer.h"

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

struct Rendering {
  const QPSSheet& sheet;
  const QPSAppearance& appearance;
  SSItemCell& cell;           // only its alignment changes
  char* delivered = nullptr;  // the host's block with a text that was not returned

  std::uint32_t columnWidth() const { return sheet.columnWidths[cell.column - 1]; }

  // Gives the host a text of any length, cut if need be; none for an empty one.
  WordText deliver(std::string_view text) {
    const std::size_t size = std::min(text.size(), kMostResultCharacters);
    if (size != 0) delivered = qpsStrDup(sheet, {text.data(), size});
    return {};
  }
};

using Form = WordText (*)(Rendering&, double value);

inline constexpr WordText kErrorMark{textWord("ERR")};

// Shows that the value does not fit or lies outside what the form can show.
inline WordText showOverflow(Rendering& r) {
  constexpr std::uint8_t kOverflowAlignment = 28;
  r.cell.alignment = kOverflowAlignment;
  return WordText(textWord("*"));
}

// Numbers (numeric_forms.cpp)
WordText showGeneral(Rendering& r, double value);
WordText showBars(Rendering& r, double value);
WordText showFixed(Rendering& r, double value);
WordText showScientific(Rendering& r, double value);
WordText showCurrency(Rendering& r, double value);
WordText showPercent(Rendering& r, double value);
WordText showComma(Rendering& r, double value);

// Dates and times (date_forms.cpp)
WordText showDatedForm(Rendering& r, double value);  // codes 5 to 9
WordText showTime12WithSeconds(Rendering& r, double value);
WordText showTime12(Rendering& r, double value);
WordText showTime24WithSeconds(Rendering& r, double value);
WordText showTime24(Rendering& r, double value);
WordText showYear(Rendering& r, double value);
WordText showMonthAbbreviation(Rendering& r, double value);
WordText showShortNumericDate(Rendering& r, double value);
WordText showNamedDate(Rendering& r,
                       double value);  // the long date under a style named "Date", else General
WordText showLongDate(Rendering& r, double value);

// The notebook's own formats (user_forms.cpp)
WordText showUserDefined(Rendering& r, double value);

}  // namespace qps

#endif  // QPSREADER_FORMAT_RENDERING_H
