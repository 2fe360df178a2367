// SPDX-License-Identifier: MIT
//
// What a user-defined format's text says, worked out once and kept beside the text.
#ifndef QPSREADER_FORMAT_USER_FORMAT_PLAN_H
#define QPSREADER_FORMAT_USER_FORMAT_PLAN_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "reader/format/rendering.h"
#include "reader/render/user_date.h"
#include "reader/render/user_number.h"

namespace qps {

struct UserFormatPlan {
  static constexpr std::size_t kMostSections = 3;

  enum class Language : std::uint8_t { kNone, kDate, kNumber };

  Form templateForm;      // how a text that is recognised whole is shown, or null
  Language language;      // by the text's first character
  std::uint8_t sections;  // of a number format; more than kMostSections show nothing
  std::string_view text;  // the format's own
  NumberSection section[kMostSections];
  DateFormat date;
};

UserFormatPlan planUserFormat(std::string_view text);

}  // namespace qps

#endif  // QPSREADER_FORMAT_USER_FORMAT_PLAN_H
