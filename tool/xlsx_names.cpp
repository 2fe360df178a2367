// SPDX-License-Identifier: MIT
#include "tool/xlsx_names.h"

#include <algorithm>

#include "tool/letter_case.h"
#include "tool/utf8.h"

namespace qps {
namespace {

constexpr std::size_t kMostUnits = 31;

std::size_t unitsOf(char32_t character) {
  return character > 0xFFFF ? 2 : 1;
}

// The characters from the start that fit.
std::string_view cut(std::string_view utf8, std::size_t mostUnits) {
  std::size_t size = 0;
  for (std::size_t units = 0; size < utf8.size();) {
    const Decoded first = firstCharacter(utf8.substr(size));
    units += unitsOf(first.character);
    if (units > mostUnits) break;
    size += first.size;
  }
  return utf8.substr(0, size);
}

std::string withoutNonCharacters(std::string_view utf8) {
  std::string result(utf8);
  for (const std::string_view forbidden : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"})
    for (std::size_t at = 0; (at = result.find(forbidden, at)) != std::string::npos; ++at)
      result[at + 2] = '\xBD';  // U+FFFD
  return result;
}

// "_xHHHH_", which a spreadsheet program takes for the character of that number.
bool isEscape(std::string_view text) {
  constexpr std::size_t kSize = 7;
  const auto isHexDigit = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
  };
  return text.size() >= kSize && text[kSize - 1] == '_' &&
         std::ranges::all_of(text.substr(2, 4), isHexDigit);
}

// With "_" for what a name may not hold.
std::string allowedCharacters(std::string_view utf8) {
  std::string name = xlsxName(utf8);
  for (std::size_t at = 0; (at = name.find_first_of("[]:*?/\\", at)) != std::string::npos; ++at)
    name[at] = '_';
  return name;
}

std::string withoutQuotesAtEnds(std::string name) {
  if (name.starts_with('\'')) name[0] = '_';
  if (name.ends_with('\'')) name.back() = '_';
  return name;
}

}  // namespace

std::string xlsxText(std::string_view utf8) {
  std::string result = withoutNonCharacters(utf8);
  for (std::size_t at = 0; (at = result.find("_x", at)) != std::string::npos; ++at) {
    if (!isEscape(std::string_view(result).substr(at))) continue;
    result.insert(at, "_x005F");
    at += std::string_view("_x005F").size();
  }
  return result;
}

std::string xlsxName(std::string_view utf8) {
  std::string result;
  for (const char byte : withoutNonCharacters(utf8)) {
    if (static_cast<unsigned char>(byte) < 0x20)
      appendCharacter(kReplacement, result);
    else
      result += byte;
  }
  return result;
}

std::string XlsxSheetNames::make(std::string_view utf8) {
  const std::string allowed = allowedCharacters(utf8.empty() ? "Sheet" : utf8);
  std::string name = withoutQuotesAtEnds(std::string(cut(allowed, kMostUnits)));
  const auto isFree = [this](const std::string& candidate) {
    const std::string lower = lowerCase(candidate);
    return lower != "history" && given_.insert(lower).second;
  };
  for (unsigned repeat = 2; !isFree(name); ++repeat) {
    const std::string end = "~" + std::to_string(repeat);
    name = withoutQuotesAtEnds(std::string(cut(allowed, kMostUnits - end.size())) + end);
  }
  return name;
}

}  // namespace qps
