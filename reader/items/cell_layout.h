// SPDX-License-Identifier: MIT
//
// Every cell record begins alike:
//
//   offset  size  field
//   0       1     column, from 0
//   2       2     row, from 0
//   4       2     style number in bits 3 to 15; 0 stands for style 1
//   6             the value, by record:
//                 13: a signed 16-bit integer
//                 14: a double
//                 15, 51: a byte that is not used and, from byte 7, the text
//                 16: the cached result
//
// The cached result of a formula has eight bytes. The word at 12 says what they are:
//
//   0x7FF8            nothing: the record 51 after this one has the result, a text
//   0x7FF0 or 0xFFF0  by the word at 10: 0 an error, 3 the 32-bit integer at 8, else no value
//   any other         a double
#ifndef QPSREADER_ITEMS_CELL_LAYOUT_H
#define QPSREADER_ITEMS_CELL_LAYOUT_H

#include <cstddef>
#include <cstdint>

#include "reader/frame/record_stream.h"

namespace qps {

inline constexpr std::size_t kStyleOffset = 4;
inline constexpr unsigned kStyleNumberShift = 3;
inline constexpr std::size_t kValueOffset = 6;
inline constexpr std::size_t kTextOffset = 7;

inline constexpr std::size_t kResultMarkerOffset = 12;
inline constexpr std::uint16_t kResultIsText = 0x7FF8;
inline constexpr std::uint16_t kSpecialResult = 0x7FF0;
inline constexpr std::uint16_t kSpecialResultNegative = 0xFFF0;

inline constexpr std::size_t kSpecialKindOffset = 10;
inline constexpr std::uint16_t kSpecialError = 0;
inline constexpr std::uint16_t kSpecialInteger = 3;
inline constexpr std::size_t kSpecialIntegerOffset = 8;

inline std::uint32_t styleFieldOf(const BodyView& body) {
  return std::uint32_t{body.u16At(kStyleOffset)} >> kStyleNumberShift;
}

constexpr bool isSpecialResult(std::uint16_t marker) {
  return marker == kSpecialResult || marker == kSpecialResultNegative;
}

}  // namespace qps

#endif  // QPSREADER_ITEMS_CELL_LAYOUT_H
