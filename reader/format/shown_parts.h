// SPDX-License-Identifier: MIT
//
// Whether a format shows a serial's date, its time of day, or both.
#ifndef QPSREADER_FORMAT_SHOWN_PARTS_H
#define QPSREADER_FORMAT_SHOWN_PARTS_H

#include <cstdint>

#include "reader/frame/qps_sheet.h"

namespace qps {

// QPSShowsDate and QPSShowsTime (cell_value.h) of the format in force. A user-defined format's text
// is read once; what it says is kept beside it.
std::uint32_t shownParts(const QPSAppearance& appearance);

}  // namespace qps

#endif  // QPSREADER_FORMAT_SHOWN_PARTS_H
