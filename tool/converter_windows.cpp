// SPDX-License-Identifier: MIT
//
// Knows "windows-1250", "cp850" and "ISO-8859-2", in any case of letters.
#include <windows.h>

#include <array>
#include <charconv>
#include <cstddef>

#include "tool/converter.h"

namespace qps {
namespace {

struct PrefixRow {
  std::string_view prefix;  // a number follows, to which `base` is added
  UINT base;
};

constexpr std::array<PrefixRow, 3> kPrefixes = {{{"windows-", 0}, {"cp", 0}, {"iso-8859-", 28590}}};

UINT codePageOf(std::string encoding) {
  for (char& c : encoding)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  for (const PrefixRow& row : kPrefixes) {
    if (!encoding.starts_with(row.prefix)) continue;
    UINT number = 0;
    const char* const end = encoding.data() + encoding.size();
    const auto parsed = std::from_chars(encoding.data() + row.prefix.size(), end, number);
    const bool whole = parsed.ec == std::errc() && parsed.ptr == end && number > 0;
    if (whole && IsValidCodePage(row.base + number) != 0) return row.base + number;
  }
  return 0;
}

class CodePageConverter final : public Converter {
 public:
  explicit CodePageConverter(UINT codePage) : codePage_(codePage) {}

  Result convert(std::string_view& text, std::string& result) override {
    while (!text.empty()) {
      const std::size_t bytes = bytesOfFirst(text.front());
      if (bytes > text.size()) return Result::kUnfinished;
      if (!appendCharacter(text.substr(0, bytes), result)) return Result::kUndefined;
      text.remove_prefix(bytes);
    }
    return Result::kDone;
  }

 private:
  std::size_t bytesOfFirst(char lead) const {
    const auto byte = static_cast<unsigned char>(lead);
    return IsDBCSLeadByteEx(codePage_, byte) != 0 ? 2 : 1;
  }

  bool appendCharacter(std::string_view bytes, std::string& result) const {
    wchar_t wide[4];
    const int wides = MultiByteToWideChar(codePage_, MB_ERR_INVALID_CHARS, bytes.data(),
                                          static_cast<int>(bytes.size()), wide, 4);
    // Windows fills the holes of its own code pages with controls.
    const bool hole = codePage_ / 10 == 125 && wides == 1 && wide[0] >= 0x80 && wide[0] < 0xA0;
    if (wides <= 0 || hole) return false;
    char utf8[16];
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, wide, wides, utf8, sizeof utf8, nullptr, nullptr);
    result.append(utf8, static_cast<std::size_t>(size));
    return true;
  }

  UINT codePage_;
};

}  // namespace

std::unique_ptr<Converter> Converter::openOfSystem(const std::string& encoding) {
  const UINT codePage = codePageOf(encoding);
  if (codePage == 0) return nullptr;
  return std::make_unique<CodePageConverter>(codePage);
}

}  // namespace qps
