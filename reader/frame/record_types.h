// SPDX-License-Identifier: MIT
//
// The types of record that the reader knows, by number.
#ifndef QPSREADER_READER_RECORD_TYPES_H
#define QPSREADER_READER_RECORD_TYPES_H

#include <cstdint>

namespace qps {

enum class RecordType : std::uint16_t {
  kFileHeader = 0,
  kEndOfFile = 1,
  kDimensions = 6,
  kBlankCell = 12,
  kIntegerCell = 13,
  kNumberCell = 14,
  kLabelCell = 15,
  kFormulaCell = 16,
  kText37 = 37,
  kText38 = 38,
  kStringCell = 51,  // the text result of the formula before it
  kRefusal = 76,     // a nonzero value: the notebook is not to be read
  kDimensionTable = 150,
  kSheetStart = 202,
  kSheetEnd = 203,
  kSheetName = 204,
  kStyle = 206,
  kFont = 207,
  kNamedStyle = 208,
  kDefaultRowHeight = 210,
  kDefaultColumnWidth = 212,
  kRowHeight = 214,
  kColumnWidth = 216,
  kHiddenRows = 220,
  kHiddenColumns = 222,
  kLayout224 = 224,
  kUserFormat = 230,
  kColumnStyle = 231,
  kValueTable = 232,
  kFlag257 = 257,
  kFlag258 = 258,
  kRowHeightRange = 261,
  kSettingsOn = 265,
  kSettingsOff = 266,
  kDefinitionsEnd = 310,
};

}  // namespace qps

#endif  // QPSREADER_READER_RECORD_TYPES_H
