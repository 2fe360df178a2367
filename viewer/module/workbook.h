// SPDX-License-Identifier: MIT
#ifndef QPSREADER_VIEWER_WORKBOOK_H
#define QPSREADER_VIEWER_WORKBOOK_H

#include <vector>

namespace qps {

// The workbook that writeXlsx wrote last, whatever file it was told.
std::vector<char> takeWorkbook();

}  // namespace qps

#endif  // QPSREADER_VIEWER_WORKBOOK_H
