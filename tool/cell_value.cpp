// SPDX-License-Identifier: MIT
#include "tool/cell_value.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace qps {
namespace {

using std::chrono::days;
using std::chrono::seconds;

// The day that a date and time fall on: a time that rounds up to midnight begins the next one.
std::chrono::year_month_day dayOf(const DateTime& when, ValueType type) {
  if (type == ValueType::kDate) return when.date;
  return std::chrono::year_month_day(std::chrono::floor<days>(when.time()));
}

// ISO 8601 has four digits for a year.
bool hasIsoYear(const std::chrono::year_month_day& date) {
  const int year = static_cast<int>(date.year());
  return year >= 0 && year <= 9999;
}

}  // namespace

ValueType typeOf(const CellValue& value) {
  switch (value.kind()) {
    case CellValue::Kind::kText:
      return ValueType::kText;
    case CellValue::Kind::kError:
      return ValueType::kError;
    case CellValue::Kind::kNumber:
      break;
    case CellValue::Kind::kBlank:
      return ValueType::kBlank;
  }
  if (!std::isfinite(*value.number())) return ValueType::kError;
  const auto when = value.dateTime();
  if (!when) return ValueType::kNumber;
  const NumberFormat format = value.format();
  if (!format.showsDate) return ValueType::kTime;
  const ValueType type = format.showsTime ? ValueType::kDateTime : ValueType::kDate;
  return hasIsoYear(dayOf(*when, type)) ? type : ValueType::kNumber;
}

const char* nameOf(ValueType type) {
  constexpr std::array<const char*, 7> kNames = {"blank",    "number", "date", "time",
                                                 "dateTime", "text",   "error"};
  return kNames[static_cast<std::size_t>(type)];
}

void appendNumber(double number, std::string& result) {
  const double magnitude = std::fabs(number);
  const bool fixed = magnitude == 0 || (magnitude >= 1e-6 && magnitude < 1e16);
  std::array<char, 32> digits;
  const auto [end, error] =
      std::to_chars(digits.data(), digits.data() + digits.size(), number,
                    fixed ? std::chars_format::fixed : std::chars_format::scientific);
  result.append(digits.data(), end);
}

void appendDate(double serial, ValueType type, std::string& result) {
  const auto when = dateTimeOf(serial);
  if (!when) return;
  std::array<char, 32> text;
  if (type != ValueType::kTime) {
    const std::chrono::year_month_day date = dayOf(*when, type);
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    result += text.data();
  }
  if (type == ValueType::kDate) return;
  if (type == ValueType::kDateTime) result += 'T';
  const std::chrono::hh_mm_ss time(when->timeOfDay % days{1});
  std::snprintf(text.data(), text.size(), "%02d:%02d:%02d", static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  result += text.data();
}

void appendValue(const CellValue& value, std::string& result) {
  const ValueType type = typeOf(value);
  switch (type) {
    case ValueType::kBlank:
      break;
    case ValueType::kNumber:
      return appendNumber(*value.number(), result);
    case ValueType::kDate:
    case ValueType::kTime:
    case ValueType::kDateTime:
      return appendDate(*value.number(), type, result);
    case ValueType::kText:
      result += *value.text();
      break;
    case ValueType::kError:
      result += "ERR";
      break;
  }
}

}  // namespace qps
