// SPDX-License-Identifier: MIT
//
// The user-defined date and time formats, such as TDD-Mon-YY: a "T", then tokens (the rows of
// qpsUSERDEFINE in qpsreader/qps_reader.h), literals in quotes, and characters that are copied
// because no token begins there. MM and M are the minute when the token before them was an hour,
// and the month otherwise. With AMPM anywhere in the text the hours are those of the dial.
#ifndef QPSREADER_RENDER_USER_DATE_H
#define QPSREADER_RENDER_USER_DATE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include <qpsreader/host_tables.h>
#include "reader/render/date_serial.h"
#include "reader/render/text_buffer.h"

namespace qps {

// What the tokens print.
struct UserDateFields {
  CalendarDate date;
  TimeOfDay time;
  std::int32_t weekday;  // weekdayIndex: 0 to 6
  bool nonNegative;      // the serial is not below 0
};

UserDateFields userDateFields(double serial);

// A piece of a format's text: a run of characters that show as they stand, or a token.
struct DatePiece {
  enum class Source : std::uint8_t {
    kLiteral,
    kWeekdayName,
    kWeekdayAbbreviation,
    kMonthName,
    kMonthAbbreviation,
    kHalfDay,
    kDay,
    kHour,
    kDialHour,
    kMinute,
    kMonth,
    kSecond,
    kYear,
    kShortYear,
  };
  enum class Letters : std::uint8_t { kAsTheyAre, kUpper, kLower };

  Source source;
  Letters letters = Letters::kAsTheyAre;  // of names
  std::uint8_t minDigits = 0;             // of numbers
  std::string_view literal;               // in the format's text
};

// Cuts a format's text (after the "T") into its pieces, from the left.
class DateScanner {
 public:
  DateScanner() = default;
  explicit DateScanner(std::string_view text);

  // The next piece, or none at the end.
  std::optional<DatePiece> next();

 private:
  DatePiece takeToken(std::uint32_t row);
  DatePiece takeQuoted();
  DatePiece takeLiteral(std::size_t size);
  DatePiece takePlain();

  std::string_view rest_;
  bool dial_ = false;          // AMPM occurs: the hours are those of the dial
  bool afterHour_ = false;     // the token before was an hour
  bool afterLiteral_ = false;  // where a quote is an ordinary character
};

// A parsed format. `text` is the caller's, which must outlive the format; its first pieces are
// kept, and the scanner stands where it takes up the others.
struct DateFormat {
  static constexpr std::size_t kKeptPieces = 16;

  bool isDate = false;  // the text begins with "T"
  std::uint8_t keptPieces = 0;
  DatePiece pieces[kKeptPieces] = {};
  DateScanner others;
};

// Of a text, the first 65535 characters count.
DateFormat parseDateFormat(std::string_view text);

// Appends what a format shows; upper and lower case of names are the host's (slots 74 and 75 of
// `services`). False, and nothing is appended, when the format's text does not begin with "T".
bool qpsFormatUserDate(TextBuffer& out, const DateFormat& format, const UserDateFields& fields,
                       SSHostServices* services);

}  // namespace qps

#endif  // QPSREADER_RENDER_USER_DATE_H
