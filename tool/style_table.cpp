// SPDX-License-Identifier: MIT
#include "tool/style_table.h"
namespace qps {

std::uint32_t StyleTable::numberOf(const SSItemCell& cell) {
  const char* const bytes = reinterpret_cast<const char*>(&cell) + kFirstByte;
  // Neighbours mostly look alike.
  if (!styles_.empty() && std::memcmp(bytes, lastKey_.data(), lastKey_.size()) == 0)
    return lastNumber_;

  std::memcpy(lastKey_.data(), bytes, lastKey_.size());
  const auto [place, isNew] =
      numbers_.try_emplace(lastKey_, Entry{static_cast<std::uint32_t>(styles_.size()), cell});
  if (isNew) {
    SSItemCell& record = place->second.record;
    record.column = record.row = 0;
    record.text = nullptr;
    styles_.push_back(&*place);
  }
  return lastNumber_ = place->second.number;
}

}  // namespace qps
