// SPDX-License-Identifier: MIT
//
// Pieces of date and time texts that several forms share.
#ifndef QPSREADER_FORMAT_DATE_TEXT_H
#define QPSREADER_FORMAT_DATE_TEXT_H

#include <cstdint>

#include "reader/render/date_serial.h"
#include "reader/render/digits.h"
#include "reader/render/word_text.h"

namespace qps {

constexpr bool isInThe1900s(std::int32_t year) {
  return year >= 1900 && year <= 1999;
}

enum class Seconds : bool { kHidden, kShown };

// 07:05:09, or 07:05.
constexpr WordText clockText(std::int32_t hour, const TimeOfDay& time, Seconds seconds) {
  WordText text;
  text.append(twoDigitsOf(hour));
  text.append(':');
  text.append(twoDigitsOf(time.minutes));
  if (seconds == Seconds::kShown) {
    text.append(':');
    text.append(twoDigitsOf(time.seconds));
  }
  return text;
}

// The same by the dial: 07:05:09 PM.
constexpr WordText dialText(const TimeOfDay& time, Seconds seconds) {
  const DialHour dial = dialHour(time.hours);
  WordText text = clockText(dial.hour, time, seconds);
  text.append(dial.pm ? textWord(" PM") : textWord(" AM"));
  return text;
}

}  // namespace qps

#endif  // QPSREADER_FORMAT_DATE_TEXT_H
