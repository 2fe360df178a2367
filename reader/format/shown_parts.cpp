// SPDX-License-Identifier: MIT
#include "reader/format/shown_parts.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include <qpsreader/cell_value.h>
#include "reader/format/format_value.h"
#include "reader/format/user_format_plan.h"

namespace qps {

namespace {

// QPSUserFormat::parts: QPSShows... of the text, and these.
constexpr std::uint8_t kIsTemplate = 4;  // the text wins over a style named "Date"
constexpr std::uint8_t kIsKnown = 8;

struct PartsRow {
  std::uint8_t code;
  std::uint8_t parts;
};

constexpr PartsRow kPartsRows[] = {
    {5, QPSShowsDate},  {6, QPSShowsDate},  {7, QPSShowsDate},  {8, QPSShowsDate},
    {9, QPSShowsDate},  {10, QPSShowsTime}, {11, QPSShowsTime}, {12, QPSShowsTime},
    {13, QPSShowsTime}, {14, QPSShowsDate}, {15, QPSShowsDate}, {96, QPSShowsDate},
};

constexpr auto kPartsByCode = [] {
  std::array<std::uint8_t, kFirstUserDefinedCode> parts{};
  for (const PartsRow& row : kPartsRows)
    parts[row.code] = row.parts;
  return parts;
}();

std::uint8_t partOf(DatePiece::Source source) {
  switch (source) {
    case DatePiece::Source::kLiteral:
      return 0;
    case DatePiece::Source::kHalfDay:
    case DatePiece::Source::kHour:
    case DatePiece::Source::kDialHour:
    case DatePiece::Source::kMinute:
    case DatePiece::Source::kSecond:
      return QPSShowsTime;
    default:
      return QPSShowsDate;
  }
}

std::uint8_t readParts(std::string_view text) {
  std::uint8_t parts = kIsKnown;
  const UserFormatPlan plan = planUserFormat(text);
  if (plan.templateForm != nullptr) parts |= kIsTemplate;
  if (plan.language != UserFormatPlan::Language::kDate) return parts;
  text.remove_prefix(1);
  DateScanner scanner(text);
  while (const std::optional<DatePiece> piece = scanner.next())
    parts |= partOf(piece->source);
  return parts;
}

std::uint8_t partsOf(QPSUserFormat* format) {
  if (format == nullptr || format->text == nullptr) return 0;
  if (format->parts == 0) format->parts = readParts({format->text, format->textBytes});
  return format->parts;
}

}  // namespace

std::uint32_t shownParts(const QPSAppearance& appearance) {
  const std::uint32_t byStyleName = appearance.isDate ? std::uint32_t{QPSShowsDate} : 0;
  if (appearance.formatCode == kNamedDateCode) return byStyleName;
  if (appearance.formatCode < kFirstUserDefinedCode) return kPartsByCode[appearance.formatCode];
  const std::uint8_t parts = partsOf(appearance.userFormat);
  if (appearance.isDate && (parts & kIsTemplate) == 0) return byStyleName;
  return parts & (QPSShowsDate | QPSShowsTime);
}

}  // namespace qps
