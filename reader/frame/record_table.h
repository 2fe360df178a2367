// SPDX-License-Identifier: MIT
//
// A dispatch table: what a pass over the file does with each type of record. A pass lists its
// rules; the table finds a record's rule in one step. Types without a rule are passed over.
#ifndef QPSREADER_READER_RECORD_TABLE_H
#define QPSREADER_READER_RECORD_TABLE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "reader/frame/record_types.h"

namespace qps {

// What a handler says of its record.
enum class [[nodiscard]] Step : std::uint8_t{
    kGoOn,  // handled: on with the next record
    kFail,  // could not be read, kept or accepted
    kEnd,   // handled: the pass is over
};

// What a handler's kFail means to the pass.
enum class OnFailure : std::uint8_t {
  kStop,    // the pass fails
  kIgnore,  // only this record is lost
};

template <typename Handler>
struct RecordRule {
  RecordType type;
  Handler handler;
  OnFailure onFailure = OnFailure::kStop;
};

// Rules by type: a constant array of RecordRules.
template <const auto& kRules>
class RecordTable {
 public:
  using Rule = std::remove_cvref_t<decltype(kRules[0])>;

  constexpr RecordTable() {
    for (const Rule& rule : kRules)
      rules_[static_cast<std::size_t>(rule.type)] = &rule;
  }

  // The rule of this type, or null.
  constexpr const Rule* find(std::uint16_t type) const {
    return type < rules_.size() ? rules_[type] : nullptr;
  }

 private:
  static constexpr std::uint16_t highestType() {
    std::uint16_t highest = 0;
    for (const Rule& rule : kRules)
      highest = std::max(highest, static_cast<std::uint16_t>(rule.type));
    return highest;
  }

  std::array<const Rule*, highestType() + std::size_t{1}> rules_{};
};

}  // namespace qps

#endif  // QPSREADER_READER_RECORD_TABLE_H
