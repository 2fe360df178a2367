// SPDX-License-Identifier: MIT
//
// A name in the directory, ready to be compared as the format compares names: the shorter one comes
// first, names of one length are ordered by their upper-cased UTF-16 units.
#ifndef QPSREADER_OLEFIO_ENTRY_NAME_H
#define QPSREADER_OLEFIO_ENTRY_NAME_H

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>

#include "olefio/compound_format.h"

namespace qps::ole {

class EntryName {
 public:
  EntryName() = default;

  // Each byte of the text is one unit. A text that is longer than a name can be gives no name.
  explicit EntryName(const char* text);

  // The name in a directory entry; none when its length is not one that a name can have.
  explicit EntryName(std::span<const std::byte, kEntryBytes> entry);

  bool isEmpty() const { return count_ == 0; }

  std::strong_ordering operator<=>(const EntryName& other) const;
  bool operator==(const EntryName& other) const = default;

 private:
  std::array<std::uint16_t, kMaxNameUnits> units_{};  // upper-cased; zero beyond the count
  std::size_t count_ = 0;
};

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_ENTRY_NAME_H
