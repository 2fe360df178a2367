// SPDX-License-Identifier: MIT
//
// From a QPSCellValue to plain values, and from a serial to the calendar.
#include <qpsreader/host/cell_value.hpp>

#include <cmath>

#include <qpsreader/host/item.hpp>

namespace qps {
namespace {

using std::chrono::days;
using std::chrono::local_days;
using std::chrono::seconds;
using std::chrono::year;

constexpr local_days kSerialZero{year(1899) / 12 / 30};
constexpr auto kFirstSerial = (local_days{year::min() / 1 / 1} - kSerialZero).count();
constexpr auto kLastSerial = (local_days{year::max() / 12 / 31} - kSerialZero).count();

// A fraction of a day to the second, halves up; exact, by integers. As m / 2^s, with 53 bits in m,
// it is floor((m x 675 + 2^(s-8)) / 2^(s-7)) seconds, because a day has 675 x 2^7; at s > 70 it is
// less than half a second.
seconds roundedToSeconds(double fraction) {
  constexpr int kMantissaBits = 53;
  int exponent = 0;
  const double mantissa = std::frexp(fraction, &exponent);
  const int s = kMantissaBits - exponent;
  if (s > 70) return seconds{0};
  const auto m = static_cast<std::uint64_t>(std::ldexp(mantissa, kMantissaBits));
  return seconds{(m * 675 + (std::uint64_t{1} << (s - 8))) >> (s - 7)};
}

}  // namespace

// A negative serial counts its days backward, cut toward zero, and its time is the rest of the day.
std::optional<DateTime> dateTimeOf(double serial) {
  const double day = std::trunc(serial);
  if (!(day >= kFirstSerial && day <= kLastSerial)) return std::nullopt;
  seconds time = roundedToSeconds(std::fabs(serial - day));
  if (serial < 0 && time > seconds{0}) time = days{1} - time;
  const local_days date = kSerialZero + days(static_cast<int>(day));
  return DateTime{std::chrono::year_month_day(date), time};
}

std::optional<double> CellValue::number() const {
  return kind() == Kind::kNumber ? std::optional(value_.number) : std::nullopt;
}

std::optional<std::string_view> CellValue::text() const {
  if (kind() != Kind::kText) return std::nullopt;
  return std::string_view(value_.text, value_.textBytes);
}

std::optional<DateTime> CellValue::dateTime() const {
  return isDate() ? dateTimeOf(value_.number) : std::nullopt;
}

NumberFormat CellValue::format() const {
  NumberFormat format;
  format.code = static_cast<std::uint8_t>(value_.formatCode);
  format.decimals = static_cast<std::uint8_t>(value_.decimals);
  format.showsDate = (value_.showsDateOrTime & QPSShowsDate) != 0;
  format.showsTime = (value_.showsDateOrTime & QPSShowsTime) != 0;
  if (value_.formatText != nullptr) format.text = value_.formatText;
  if (value_.styleName != nullptr) format.styleName = value_.styleName;
  return format;
}

CellValue CellView::value() const {
  QPSCellValue value{};
  return QPSGetCellValue(sheet_, &value) == 0 ? CellValue(value) : CellValue();
}

}  // namespace qps
