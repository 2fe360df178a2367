// SPDX-License-Identifier: MIT
//
// A dispatch table: what a pass over the file does with each type of record. A pass lists its
// rules; the table finds a record's rule in one step. Types without a rule are passed over.
#ifndef QPSREADER_READER_RECORD_TABLE_H
#define QPSREADER_READER_RECORD_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>

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
  OnFailure onFailure;
};

template <typename Handler>
class RecordTable {
 public:
  // The rules outlive the table.
  template <std::size_t Count>
  explicit constexpr RecordTable(const RecordRule<Handler> (&rules)[Count]) {
    for (const RecordRule<Handler>& rule : rules)
      rules_[static_cast<std::size_t>(rule.type)] = &rule;
  }

  constexpr const RecordRule<Handler>* find(std::uint16_t type) const {
    return type <= kHighestHandledRecord ? rules_[type] : nullptr;
  }

 private:
  std::array<const RecordRule<Handler>*, kHighestHandledRecord + 1> rules_{};
};

template <typename Handler, std::size_t Count>
RecordTable(const RecordRule<Handler> (&)[Count]) -> RecordTable<Handler>;

}  // namespace qps

#endif  // QPSREADER_READER_RECORD_TABLE_H
