// SPDX-License-Identifier: MIT
//
// Any bytes as a notebook in a plain file: the whole reader, from the listing to the last item.
#include "fuzz/session.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr uint32_t kMostItems = 1024;
  qps::fuzz::LeanHost host({data, size});
  qps::fuzz::visitNotebook(host, kMostItems, qps::fuzz::kPlainWork);
  host.requireAtRest();
  return 0;
}
