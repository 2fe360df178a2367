// SPDX-License-Identifier: MIT
//
// The styles of cells, each kept once: a cell holds a number instead of 112 bytes.
#ifndef QPSREADER_TOOL_STYLE_TABLE_H
#define QPSREADER_TOOL_STYLE_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <vector>

#include <qpsreader/host/item.hpp>

namespace qps {

class StyleTable {
 public:
  // The number of the item's style: its bytes from the alignment on. Unwritten ones must be 0.
  std::uint32_t numberOf(const SSItemCell& cell);

  std::size_t size() const { return styles_.size(); }
  CellStyle style(std::uint32_t number) const { return CellView(record(number)).style(); }

  // A cell item that has this style, and neither place nor text.
  const SSItemCell& record(std::uint32_t number) const { return styles_[number]->second.record; }

  // What one style costs here and in a writer, near enough for a memory limit.
  static constexpr std::size_t kBytesPerStyle = 1024;

 private:
  static constexpr std::size_t kFirstByte = offsetof(SSItemCell, alignment);
  using Key = std::array<char, SSItemBytes - kFirstByte>;

  struct IsBefore {
    bool operator()(const Key& a, const Key& b) const {
      return std::memcmp(a.data(), b.data(), a.size()) < 0;
    }
  };
  struct Entry {
    std::uint32_t number;
    SSItemCell record;
  };
  // In order: a file chooses its styles, and could choose such as meet in one place of a hash
  // table.
  using Map = std::map<Key, Entry, IsBefore>;

  Map numbers_;
  std::vector<const Map::value_type*> styles_;  // by number
  Key lastKey_{};
  std::uint32_t lastNumber_ = 0;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_STYLE_TABLE_H
