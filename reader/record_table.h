// SPDX-License-Identifier: MIT
//
// A dispatch table: what a pass over the file does with each type of record. A pass lists its
// rules; the table finds a record's rule in one step. Types without a rule are passed over.
#ifndef QPSREADER_READER_RECORD_TABLE_H
#define QPSREADER_READER_RECORD_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "reader/record_types.h"

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

template <typename Handler, std::size_t Count>
class RecordTable {
 public:
  explicit constexpr RecordTable(const RecordRule<Handler> (&rules)[Count]) {
    static_assert(Count < kNoRule);
    slots_.fill(kNoRule);
    for (std::size_t i = 0; i < Count; ++i) {
      rules_[i] = rules[i];
      slots_[static_cast<std::size_t>(rules[i].type)] = static_cast<std::uint8_t>(i);
    }
  }

  constexpr const RecordRule<Handler>* find(std::uint16_t type) const {
    if (type > kHighestHandledRecord || slots_[type] == kNoRule) return nullptr;
    return &rules_[slots_[type]];
  }

 private:
  static constexpr std::uint8_t kNoRule = 0xFF;

  std::array<RecordRule<Handler>, Count> rules_{};
  std::array<std::uint8_t, kHighestHandledRecord + 1> slots_{};
};

}  // namespace qps

#endif  // QPSREADER_READER_RECORD_TABLE_H
