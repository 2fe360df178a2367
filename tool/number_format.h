// SPDX-License-Identifier: MIT
//
// The number formats of a notebook: which form shows a number, and each of them kept once.
#ifndef QPSREADER_TOOL_NUMBER_FORMAT_H
#define QPSREADER_TOOL_NUMBER_FORMAT_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <qpsreader/host/cell_value.hpp>

namespace qps {

// How a number shows. Examples are of 5 January 2024, 18:00:05.
enum class NumberForm : std::uint8_t {
  kGeneral,
  kBars,           // a sign for each unit
  kNothing,        // the cell shows nothing
  kDayMonthYear,   // 05-Jan-24
  kDayMonth,       // 05-Jan
  kMonthYear,      // Jan-2024
  kNumericDate,    // 01/05/24
  kMonthDay,       // 01/05
  kTime12Seconds,  // 06:00:05 PM
  kTime12,         // 06:00 PM
  kTime24Seconds,  // 18:00:05; as kTime12Seconds in a notebook of version 0x1007
  kTime24,         // 18:00; as kTime12 in such a notebook
  kYear,           // 2024
  kMonth,          // Jan
  kFixed,
  kScientific,
  kCurrency,
  kPercent,
  kComma,
  kShortDate,  // 1/5/24
  kLongDate,   // January 5, 2024
  kUser,       // by a text of the notebook's own
};

// "general", "dayMonthYear" and so on.
const char* nameOf(NumberForm form);

bool showsDecimals(NumberForm form);

struct FormatFacts {
  NumberForm form = NumberForm::kGeneral;
  std::uint8_t decimals = 0;  // of the forms that show decimals, else 0
  std::string text;  // of the notebook's own format, in its own bytes; "" when it has none. A form
                     // other than kUser may have one that does not count

  // clang-tidy 14 takes the zero in it for a pointer. NOLINTNEXTLINE(modernize-use-nullptr)
  auto operator<=>(const FormatFacts&) const = default;
};

FormatFacts factsOf(const NumberFormat& format);

class FormatTable {
 public:
  std::uint32_t numberOf(const NumberFormat& format);

  std::size_t size() const { return formats_.size(); }
  const FormatFacts& operator[](std::uint32_t number) const { return *formats_[number]; }
  std::size_t longestText() const { return longestText_; }  // in bytes

  // What one format costs here and in a writer, near enough for a memory limit.
  static constexpr std::size_t kBytesPerFormat = 1024;

 private:
  // The one asked for last, with texts of its own: neighbours mostly have one format.
  NumberFormat last_;
  std::string lastText_, lastStyle_;
  std::uint32_t lastNumber_ = 0;

  std::map<FormatFacts, std::uint32_t> numbers_;
  std::vector<const FormatFacts*> formats_;  // by number
  std::size_t longestText_ = 0;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_NUMBER_FORMAT_H
