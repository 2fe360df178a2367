// SPDX-License-Identifier: MIT
//
// Any bytes as a notebook in a plain file: the whole reader on a host without faults, at the least
// cost, and so the deepest into the records.
#include "fuzz/session.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kMostItems = 1024;
  qps::test::RecordingHost host(qps::fuzz::copyOf({data, size}));
  qps::fuzz::visitNotebook(host, kMostItems, qps::fuzz::kPlainWork);
  return 0;
}
