// SPDX-License-Identifier: MIT
//
// Names of output on a disk that ignores the case of letters, which few machines for tests have.
#include "tool/output_names.h"

#include <clocale>
#include <cwctype>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "tool/letter_case.h"
#include "tool/utf8.h"

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

TEST(LetterCase, IsUnicodes) {
  const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  ASSERT_NE(unicode, nullptr);
  const std::map<char32_t, char32_t> others = {{0xB5, 0x3BC}, {0x17F, 's'}, {0x3C2, 0x3C3}};
  unsigned capitals = 0, known = 0;
  for (char32_t c = 1; c < 0x10000; ++c) {
    if (c >= 0xD800 && c < 0xE000) continue;
    std::string character, lower;
    appendCharacter(c, character);
    const auto other = others.find(c);
    const char32_t small = other != others.end() ? other->second : towlower_l(c, unicode);
    appendCharacter(small, lower);
    const std::string ours = lowerCase(character);
    if (hasKnownCase(c)) {
      EXPECT_EQ(ours, lower);
      EXPECT_EQ(other, others.end());
    } else if (ours != character) {
      EXPECT_EQ(ours, lower);
    }
    capitals += small != c;
    known += lowerCase(character) != character;
  }
  EXPECT_EQ(known, 521u);
  EXPECT_LT(known, capitals);
  freelocale(unicode);
}

}  // namespace
}  // namespace qps
