// SPDX-License-Identifier: MIT
//
// What a form works on, and the names of the forms. A form is one way to show a value: it writes
// into an empty text of at most 127 characters, which it may leave empty.
#ifndef QPSREADER_FORMAT_RENDERING_H
#define QPSREADER_FORMAT_RENDERING_H

#include <cstdint>
#include <string_view>

#include "items/ss_item.h"
#include "reader/qps_sheet.h"
#include "render/text_buffer.h"

namespace qps {

struct Rendering {
  const QPSSheet& sheet;
  const QPSAppearance& appearance;
  SSItemCell& cell;  // only its alignment changes
  TextBuffer& text;
  double value;
  std::uint32_t columnWidth;
};

using Form = void (*)(Rendering&);

inline constexpr std::string_view kErrorMark = "ERR";

// Shows that the value does not fit or lies outside what the form can show.
inline void showOverflow(Rendering& r) {
  constexpr std::uint8_t kOverflowAlignment = 28;
  r.text.append('*');
  r.cell.alignment = kOverflowAlignment;
}

// Numbers (numeric_forms.cpp)
void showGeneral(Rendering& r);
void showBars(Rendering& r);
void showFixed(Rendering& r);
void showScientific(Rendering& r);
void showCurrency(Rendering& r);
void showPercent(Rendering& r);
void showComma(Rendering& r);

// Dates and times (date_forms.cpp)
void showDayMonthYear(Rendering& r);
void showDayMonth(Rendering& r);
void showMonthYear(Rendering& r);
void showNumericDate(Rendering& r);
void showMonthDay(Rendering& r);
void showTime12WithSeconds(Rendering& r);
void showTime12(Rendering& r);
void showTime24WithSeconds(Rendering& r);
void showTime24(Rendering& r);
void showYear(Rendering& r);
void showMonthAbbreviation(Rendering& r);
void showShortNumericDate(Rendering& r);
void showNamedDate(Rendering& r);  // the long date under a style named "Date", else General
void showLongDate(Rendering& r);

// The notebook's own formats (user_forms.cpp)
void showUserDefined(Rendering& r);

}  // namespace qps

#endif  // QPSREADER_FORMAT_RENDERING_H
