// SPDX-License-Identifier: MIT
#include <cstring>

#include "reader/qps_sheet.h"

namespace qps {

char* qpsStrDup(const QPSSheet& sheet, std::string_view text) {
  auto* copy =
      static_cast<char*>(sheet.itemAlloc(sheet.itemAllocContext, nullptr, text.size() + 1, 0));
  if (copy == nullptr) return nullptr;
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

}  // namespace qps
