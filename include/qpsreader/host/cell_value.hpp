// SPDX-License-Identifier: MIT
//
// What a cell holds, beside what it shows: CellView::value.
//
//     const qps::CellValue value = cell->value();
//     if (const auto when = value.dateTime()) ...
//     else if (const auto number = value.number()) ...
//     else if (const auto text = value.text()) ...
//
// Texts hold as long as the item does; they are the file's own bytes.
#ifndef QPSREADER_HOST_CELL_VALUE_HPP
#define QPSREADER_HOST_CELL_VALUE_HPP

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

#include <qpsreader/cell_value.h>

namespace qps {

// The number format in force.
struct NumberFormat {
  std::uint8_t code = 0;  // 16, 32, 48, 64, 80, 96 and 112 are families; from 113 on they are the
                          // notebook's own
  std::uint8_t decimals = 0;             // 0 to 15, for the families that show decimals
  bool showsDate = false;                // what it shows of a number: a date, or a part of one
  bool showsTime = false;                // a time of day, or a part of one
  std::optional<std::string_view> text;  // of the notebook's own format
  std::string_view styleName;            // of the named style that the cell's is based on, or ""
};

// A date and a time as the reader shows them, to the second. The calendar is the Gregorian one,
// before 1582 too. Serials count days from 1899-12-30; the fraction is the time of day.
struct DateTime {
  std::chrono::year_month_day date;
  // 0 to 24 hours. A time that rounds up to midnight is 24:00:00, the end of `date`; it shows as
  // 00:00:00 beside that date.
  std::chrono::seconds timeOfDay{};

  // Both as one point of time, in no time zone.
  std::chrono::local_seconds time() const { return std::chrono::local_days(date) + timeOfDay; }

  bool operator==(const DateTime&) const = default;
};

// The date and time of a serial. None for a value that is no number, and for years that
// std::chrono::year does not hold (-32767 to 32767).
std::optional<DateTime> dateTimeOf(double serial);

class CellValue {
 public:
  enum class Kind : std::uint8_t {
    kBlank = QPSCellBlank,
    kNumber = QPSCellNumber,
    kText = QPSCellText,
    kError = QPSCellError,  // of a formula; shows as "ERR"
  };

  CellValue() = default;  // blank
  explicit CellValue(const QPSCellValue& value) : value_(value) {}

  Kind kind() const { return static_cast<Kind>(value_.kind); }
  bool isFormula() const { return value_.isFormula != 0; }

  // The number of a number cell, a date's serial included. In a damaged file it may be infinite or
  // no number.
  std::optional<double> number() const;

  // The text of a label, or a formula's text result.
  std::optional<std::string_view> text() const;

  // Whether it is a number that shows as a date, a time of day or both (format() says which).
  bool isDate() const { return kind() == Kind::kNumber && value_.showsDateOrTime != 0; }

  // The date and time of such a number; none for any other, and none out of range (dateTimeOf).
  std::optional<DateTime> dateTime() const;

  NumberFormat format() const;

 private:
  QPSCellValue value_{};
};

}  // namespace qps

#endif  // QPSREADER_HOST_CELL_VALUE_HPP
