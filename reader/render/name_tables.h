// SPDX-License-Identifier: MIT
//
// English month and weekday names, as the built-in and the user-defined date forms print them.
#ifndef QPSREADER_RENDER_NAME_TABLES_H
#define QPSREADER_RENDER_NAME_TABLES_H

#include <array>
#include <cstddef>
#include <string_view>

#include "reader/render/word_text.h"

namespace qps {

// Indexed by the month, 1 to 12; entry 0 is empty.
inline constexpr std::array<std::string_view, 13> monthAbbreviations = {
    "", "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

inline constexpr std::array<std::string_view, 13> monthNames = {
    "",     "January", "February",  "March",   "April",    "May",     "June",
    "July", "August",  "September", "October", "November", "December"};

// Indexed from Saturday, the weekday of serial 0 (see weekdayNameIndex).
inline constexpr std::array<std::string_view, 7> weekdayAbbreviations = {"Sat", "Sun", "Mon", "Tue",
                                                                         "Wed", "Thu", "Fri"};

inline constexpr std::array<std::string_view, 7> weekdayNames = {
    "Saturday", "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday"};

// The abbreviations of the months once more, for texts in registers.
inline constexpr std::array<TextWord, 13> kMonthWords = [] {
  std::array<TextWord, 13> words{};
  for (std::size_t month = 0; month < words.size(); ++month)
    words[month] = textWord(monthAbbreviations[month]);
  return words;
}();

}  // namespace qps

#endif  // QPSREADER_RENDER_NAME_TABLES_H
