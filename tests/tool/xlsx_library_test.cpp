// SPDX-License-Identifier: MIT
//
// What a run over many notebooks must not keep.
#include "tool/xlsx_library.h"

#include <malloc.h>

#include <gtest/gtest.h>

namespace qps {
namespace {

TEST(XlsxTemporaries, LeaveNothing) {
  const auto inUse = [] {
    for (int times = 0; times < 100; ++times)
      XlsxTemporaries temporaries(testing::TempDir(), 0);
    return mallinfo2().uordblks;
  };
  const std::size_t before = inUse();
  EXPECT_LT(inUse(), before + 1000);
}

}  // namespace
}  // namespace qps
