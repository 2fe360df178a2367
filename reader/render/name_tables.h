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

// The abbreviations once more, for texts in registers.
template <std::size_t Count>
constexpr std::array<TextWord, Count> wordsOf(const std::array<std::string_view, Count>& names) {
  std::array<TextWord, Count> words{};
  for (std::size_t i = 0; i < Count; ++i)
    words[i] = textWord(names[i]);
  return words;
}
inline constexpr auto kMonthWords = wordsOf(monthAbbreviations);
inline constexpr auto kWeekdayWords = wordsOf(weekdayAbbreviations);

}  // namespace qps

#endif  // QPSREADER_RENDER_NAME_TABLES_H
