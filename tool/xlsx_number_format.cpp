// SPDX-License-Identifier: MIT
#include "tool/xlsx_number_format.h"

#include <cmath>
#include <limits>
#include <utility>

#include <qpsreader/host/cell_value.hpp>
#include "tool/xlsx_user_format.h"

namespace qps {
namespace {

// The workbook's calendar has a 29 February 1900, so the two agree from the day after it on, and it
// ends with the year 9999. A time alone is the same from 0 on.
constexpr double kFirstDate = 61;
constexpr double kAfterLastDate = 2958466;
// The last day that the forms from kDayMonthYear to kMonthDay show.
constexpr double kLastShownDate = 474816;

constexpr std::uint16_t kVersionOf12Hours = 0x1007;

XlsxNumberFormat forEveryNumber(std::string text) {
  constexpr double kMost = std::numeric_limits<double>::max();
  return {std::move(text), -kMost, kMost};
}

XlsxNumberFormat forDates(std::string text, double most = std::nextafter(kAfterLastDate, 0)) {
  return {std::move(text), kFirstDate, most};
}

XlsxNumberFormat forTimes(std::string text) {
  return {std::move(text), 0, std::nextafter(kAfterLastDate, 0)};
}

// Negative ones in parentheses; the notebook puts a blank behind both.
XlsxNumberFormat grouped(const std::string& currency, std::size_t decimals) {
  const std::string digits = currency + "#,##" + fixedPattern(decimals);
  return forEveryNumber(digits + "_);(" + digits + ")");
}

std::string exponentPattern(std::size_t decimals) {
  return fixedPattern(decimals) + "E+00";
}

std::optional<XlsxNumberFormat> userFormatOf(const std::string& text, const Decoder& decoder) {
  if (text == "N9;N0;N'-'9") return forEveryNumber("General");
  if (text.starts_with('N')) {
    auto number = xlsxUserNumber(text, decoder);
    if (!number) return std::nullopt;
    XlsxNumberFormat format = forEveryNumber(std::move(number->text));
    format.leastMagnitude = number->leastMagnitude;
    return format;
  }
  const auto date = xlsxUserDate(text, decoder);
  if (!date) return std::nullopt;
  if (!date->showsDate) return forTimes(date->text);
  XlsxNumberFormat format = forDates(date->text);
  format.showsDateAndTime = date->showsTime;
  return format;
}

std::optional<XlsxNumberFormat> formatOf(const FormatFacts& format, std::uint16_t version,
                                         const Decoder& decoder) {
  const bool shows12Hours = version == kVersionOf12Hours;
  switch (format.form) {
    case NumberForm::kGeneral:
      return forEveryNumber("General");
    case NumberForm::kBars:
      return std::nullopt;
    case NumberForm::kNothing:
      return forEveryNumber(";;;");
    case NumberForm::kDayMonthYear:
      return forDates("dd-mmm-yy", kLastShownDate);
    case NumberForm::kDayMonth:
      return forDates("dd-mmm", kLastShownDate);
    case NumberForm::kMonthYear:
      return forDates(byCentury("mmm-yy", "mmm-yyyy"), kLastShownDate);
    case NumberForm::kNumericDate:
      return forDates(R"(mm\/dd\/yy)", kLastShownDate);
    case NumberForm::kMonthDay:
      return forDates(R"(mm\/dd)", kLastShownDate);
    case NumberForm::kTime12Seconds:
      return forTimes("hh:mm:ss AM/PM");
    case NumberForm::kTime12:
      return forTimes("hh:mm AM/PM");
    case NumberForm::kTime24Seconds:
      return forTimes(shows12Hours ? "hh:mm:ss AM/PM" : "hh:mm:ss");
    case NumberForm::kTime24:
      return forTimes(shows12Hours ? "hh:mm AM/PM" : "hh:mm");
    case NumberForm::kYear:
      return forDates("yyyy");
    case NumberForm::kMonth:
      return forDates("mmm");
    case NumberForm::kFixed:
      return forEveryNumber(fixedPattern(format.decimals));
    case NumberForm::kScientific:
      return forEveryNumber(exponentPattern(format.decimals));
    case NumberForm::kCurrency:
      return grouped("\"$\"", format.decimals);
    case NumberForm::kPercent:
      return forEveryNumber(fixedPattern(format.decimals) + "%");
    case NumberForm::kComma:
      return grouped("", format.decimals);
    case NumberForm::kShortDate:
      return forDates(R"(m\/d\/yy)");
    case NumberForm::kLongDate:
      return forDates(R"(mmmm\ d\,\ yyyy)");
    case NumberForm::kUser:
      return userFormatOf(format.text, decoder);
  }
  return std::nullopt;
}

}  // namespace

bool XlsxNumberFormat::shows(double number) const {
  if (!(number >= least && number <= most && std::fabs(number) >= leastMagnitude)) return false;
  if (!showsDateAndTime) return true;
  const auto when = dateTimeOf(number);
  return when && when->timeOfDay < std::chrono::days{1};
}

std::optional<XlsxNumberFormat> xlsxNumberFormatOf(const FormatFacts& format,
                                                   std::uint16_t formatVersion,
                                                   const Decoder& decoder) {
  constexpr std::size_t kMostBytes = 127;  // the library cuts longer ones
  auto result = formatOf(format, formatVersion, decoder);
  if (result && result->text.size() > kMostBytes) return std::nullopt;
  return result;
}

}  // namespace qps
