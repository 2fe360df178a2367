// SPDX-License-Identifier: MIT
//
// The list of worksheets: a heading, then a line for each with tabs between the columns.
#include <string>

#include "tool/commands.h"
#include "tool/document.h"
#include "tool/output.h"
#include "tool/text_forms.h"

namespace qps {

void writeSheets(Output& out, const Document& document, std::span<const SheetData> sheets,
                 const Settings&) {
  const std::string file = document.many ? visible(document.name) + "\t" : "";
  if (!document.follows) {
    if (document.many) out.write("file\t");
    out.write(
        "number\tname\trows\tcolumns\tused\tcells\tblank cells\thidden rows\thidden columns\t"
        "offset\n");
  }
  for (const SheetData& sheet : sheets) {
    std::string line = file + std::to_string(sheet.number) + "\t" + visible(sheet.name) + "\t" +
                       std::to_string(sheet.info.rowCount) + "\t" +
                       std::to_string(sheet.info.columnCount) + "\t" +
                       (sheet.shown.empty() ? "-" : sheet.shown.name());
    for (const std::uint64_t count :
         {sheet.shownCells, sheet.blankCells, std::uint64_t{sheet.hiddenRows()},
          std::uint64_t{sheet.hiddenColumns()}, std::uint64_t{sheet.startOffset}})
      line += "\t" + std::to_string(count);
    out.write(line + "\n");
  }
}

}  // namespace qps
