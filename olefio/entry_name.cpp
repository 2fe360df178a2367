// SPDX-License-Identifier: MIT
//
// Taking names from texts and from directory entries, and their order.
#include "olefio/entry_name.h"

#include <algorithm>

#include "olefio/bytes.h"

namespace qps::ole {

namespace {

// Upper case of the units below 256: texts hold no others, so case decides nothing else. (The other
// letters keep theirs, which can only misdirect the first steps of a search.)
std::uint16_t toUpper(std::uint16_t unit) {
  constexpr std::uint16_t kDivisionSign = 0xF7;
  const bool isAscii = unit >= 'a' && unit <= 'z';
  const bool isLatin = unit >= 0xE0 && unit <= 0xFE && unit != kDivisionSign;
  return static_cast<std::uint16_t>(isAscii || isLatin ? unit - 0x20 : unit);
}

}  // namespace

EntryName::EntryName(const char* text) {
  for (; text[count_] != '\0'; ++count_) {
    if (count_ == kMaxNameUnits) {
      *this = {};
      return;
    }
    units_[count_] = toUpper(static_cast<unsigned char>(text[count_]));
  }
}

EntryName::EntryName(std::span<const std::byte, kEntryBytes> entry) {
  const auto bytes = field<std::uint16_t, kEntryNameBytes>(entry);
  const std::size_t units = bytes / sizeof(std::uint16_t);
  if (bytes % sizeof(std::uint16_t) != 0 || units == 0 || units > kMaxNameUnits + 1) return;
  count_ = units - 1;
  for (std::size_t i = 0; i < count_; ++i) {
    units_[i] = toUpper(element<std::uint16_t>(entry.subspan<kEntryName>(), i));
  }
}

std::strong_ordering EntryName::operator<=>(const EntryName& other) const {
  if (count_ != other.count_) return count_ <=> other.count_;
  return std::lexicographical_compare_three_way(units_.begin(), units_.end(), other.units_.begin(),
                                                other.units_.end());
}

}  // namespace qps::ole
