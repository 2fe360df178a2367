// SPDX-License-Identifier: MIT
#include "reader/render/number_text.h"

#include <cstddef>
#include <cstring>

#include <qpsreader/qps_reader.h>
#include "reader/render/digits.h"

namespace qps {

void qpsInsertThousands(TextBuffer& text, std::string_view number) {
  // One group at a time, so that a number of any length is cut where the text is full.
  std::string_view rest = number;
  for (std::size_t left = std::min(number.find('.'), number.size()); left > 0;) {
    const std::size_t group = (left - 1) % 3 + 1;
    text.append(rest.substr(0, group));
    rest.remove_prefix(group);
    left -= group;
    if (left > 0) text.append(',');
  }
  text.append(rest);
}

void qpsFormatTrimmed(TextBuffer& text, double value, int precision) {
  const std::size_t start = text.size();
  text.appendFixed(value, precision);
  const std::string_view printed = text.view();
  std::size_t end = printed.size();
  if (end > start + 8) end -= endingZeros(&printed[end - 8]);
  while (end > start + 1 && printed[end - 1] == '0')
    --end;
  if (end > start && printed[end - 1] == '.') --end;
  text.truncateTo(end);
}

void appendScientificFallback(TextBuffer& text, double value) {
  char area[16];  // -1.23E+008 and its terminator
  TextBuffer number(area);
  number.appendScientific(value, 2);
  static_cast<void>(number.c_str());
  qps2to3E(area);
  text.append(std::string_view(area));
}

}  // namespace qps

void qps2to3E(char* text) {
  constexpr size_t kMostChars = 273;
  const size_t length = std::strlen(text);
  const char* e = std::strchr(text, 'E');
  // The exponent's two digits stand two characters after the E, at the end.
  if (length > kMostChars || e == nullptr || text + length - e != 4) return;
  char* digits = text + length - 2;
  std::memmove(digits + 1, digits, 3);
  *digits = '0';
}
