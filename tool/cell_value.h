// SPDX-License-Identifier: MIT
//
// The value of a cell as this program tells it: its type, and its text where values are printed.
#ifndef QPSREADER_TOOL_CELL_VALUE_H
#define QPSREADER_TOOL_CELL_VALUE_H

#include <cstdint>
#include <string>

#include <qpsreader/host/cell_value.hpp>

namespace qps {

enum class ValueType : std::uint8_t {
  kBlank,
  kNumber,
  kDate,  // a number that shows as a date, a time of day or both, and can be written as one
  kTime,
  kDateTime,
  kText,
  kError,  // of a formula; or a number that is none, or infinite: they show as "ERR" too
};

ValueType typeOf(const CellValue& value);

// "number", "dateTime" and so on.
const char* nameOf(ValueType type);

// The fewest digits that give the same double again; with an exponent below 1e-6 and from 1e16 on.
void appendNumber(double number, std::string& result);

// A serial by ISO 8601: 2024-01-01, 07:30:00 or 2024-01-01T07:30:00. `type` is what typeOf found.
void appendDate(double serial, ValueType type, std::string& result);

// What --values prints: digits, a date, "ERR", or the text's own bytes; nothing for a blank cell.
void appendValue(const CellValue& value, std::string& result);

}  // namespace qps

#endif  // QPSREADER_TOOL_CELL_VALUE_H
