// SPDX-License-Identifier: MIT
//
// Names of output on a disk that ignores the case of letters, which few machines for tests have.
#include "tool/output_names.h"

#include <gtest/gtest.h>

namespace qps {
namespace {

TEST(OutputNames, NamesThatDifferInCaseAloneHaveDifferentOutputs) {
  const struct {
    const char* source;
    const char* name;
  } cases[] = {
      {"abc/x.wb2", "abc/x.wb2"},
      {"Abc/x.wb2", "Abc/x.wb2%u1"},
      {"./abC//X.WB2", "abC/X.WB2%u4d"},
      {"abc/x.wb2%u1", "abc/x.wb2%25u1"},
      {"\u00e9", "\u00e9"},
      {"\u00c9", "\u00c9%u1"},
      {"e\u0301", "e%CC%81"},  // another spelling of the first
      {"\u0434\u042f", "\u0434\u042f%u2"},
      {"\u5e33\u30d6", "\u5e33\u30d6"},
      {"stra\u00dfe", "stra%C3%9Fe"},  // "strasse" for some
      {"\u017f", "%C5%BF%u1"},         // all of these can be an "s", a "k" or an "i"
      {"\u212a", "%E2%84%AA"},
      {"\u0130", "%C4%B0%u1"},
      {"\u0131", "%C4%B1"},
  };
  OutputNames ignoring("", true), plain("", false);
  for (const auto& row : cases)
    EXPECT_EQ(ignoring.pathOf(row.source), row.name);
  EXPECT_EQ(plain.pathOf("\u00dfA"), "\u00dfA");
}

}  // namespace
}  // namespace qps
