// SPDX-License-Identifier: MIT
//
// The user-defined date and time formats, such as TDD-Mon-YY: a "T", then tokens (the rows of
// qpsUSERDEFINE in reader/qps_reader.h), literals in quotes, and characters that are copied because
// no token begins there. MM and M are the minute when the token before them was an hour, and the
// month otherwise. With AMPM anywhere in the text the hours are those of the dial.
#ifndef QPSREADER_RENDER_USER_DATE_H
#define QPSREADER_RENDER_USER_DATE_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "reader/host_tables.h"
#include "render/date_serial.h"

namespace qps {

// What the tokens print.
struct UserDateFields {
  CalendarDate date;
  TimeOfDay time;
  int32_t weekday;   // weekdayIndex: 0 to 6
  bool nonNegative;  // the serial is not below 0
};

UserDateFields userDateFields(double serial);

// Renders `formatText`; upper and lower case of names are the host's (slots 74 and 75 of
// `services`).
//
// The result, at most 511 characters and perhaps empty, stands zero-terminated in an area that all
// calls share, and is valid until the next call. There is none when the text does not begin with
// "T".
std::optional<std::string_view> qpsFormatUserDate(std::string_view formatText,
                                                  const UserDateFields& fields,
                                                  SSHostServices* services);

}  // namespace qps

#endif  // QPSREADER_RENDER_USER_DATE_H
