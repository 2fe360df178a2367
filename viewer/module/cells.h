// SPDX-License-Identifier: MIT
//
// Cells as JSON: their places, texts, values, formats and styles. Formats and styles are numbered;
// each is described where its number occurs first.
#ifndef QPSREADER_VIEWER_CELLS_H
#define QPSREADER_VIEWER_CELLS_H

#include <cstdint>
#include <map>
#include <string>
#include <tuple>

#include <qpsreader/host/notebook.hpp>
#include "tool/encoding.h"
#include "tool/json_forms.h"
#include "tool/style_table.h"

namespace qps {

class CellWriter {
 public:
  explicit CellWriter(const Decoder& decoder) : decoder_(decoder) {}

  // {"row":2,"column":1,"text":"5%","kind":"number","value":0.05,"isFormula":true,"format":0,
  // "style":3}; a text of null for a cell that shows nothing. A date, time or both has its serial
  // for the value, and "date" in the ISO form. What JSON cannot say is a string: "NaN", "Infinity".
  // "newFormat" and "newStyle" describe a number that was not used before.
  void write(const Item& item, const CellView& cell, Json& json);

 private:
  using FormatKey = std::tuple<unsigned, unsigned, bool, bool, std::string, std::string>;

  void putValue(const CellValue& value, Json& json);
  void putFormat(const NumberFormat& format, Json& json);
  void putStyle(const SSItemCell& cell, Json& json);

  const Decoder& decoder_;
  std::map<FormatKey, std::uint32_t> formats_;
  StyleTable styles_;
};

}  // namespace qps

#endif  // QPSREADER_VIEWER_CELLS_H
