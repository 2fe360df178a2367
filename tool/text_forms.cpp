// SPDX-License-Identifier: MIT
#include "tool/text_forms.h"

#include "tool/utf8.h"

namespace qps {
namespace {

// Controls beyond ASCII, line and paragraph separators, and the marks of writing direction.
bool isHidden(char32_t c) {
  return (c >= 0x80 && c <= 0x9F) || (c >= 0x200E && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
}

void appendByNumber(char32_t character, std::string& result) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  result += "<U+";
  for (int shift = 12; shift >= 0; shift -= 4)
    result += kDigits[character >> shift & 0xF];
  result += '>';
}

}  // namespace

std::string columnName(std::uint32_t column) {
  std::string name;
  for (; column > 0; column = (column - 1) / 26)
    name.insert(name.begin(), static_cast<char>('A' + (column - 1) % 26));
  return name;
}

std::string cellAddress(std::uint32_t column, std::uint32_t row) {
  return columnName(column) + std::to_string(row);
}

std::string counted(std::uint64_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string htmlColour(std::uint32_t colour) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text = "#";
  for (const unsigned shift : {0U, 8U, 16U}) {  // red, green, blue
    text += kDigits[colour >> (shift + 4) & 0xF];
    text += kDigits[colour >> shift & 0xF];
  }
  return text;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string validUtf8(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const Decoded first = firstCharacter(text);
    if (first.character == kReplacement)
      appendCharacter(kReplacement, result);
    else
      result.append(text.substr(0, first.size));
    text.remove_prefix(first.size);
  }
  return result;
}

void appendVisible(std::string_view utf8, std::string& result) {
  while (!utf8.empty()) {
    const Decoded first = firstCharacter(utf8);
    if (first.character < 0x20)
      appendCharacter(0x2400 + first.character, result);
    else if (first.character == 0x7F)
      appendCharacter(0x2421, result);
    else if (isHidden(first.character))
      appendByNumber(first.character, result);
    else if (first.character == kReplacement)
      appendCharacter(kReplacement, result);
    else
      result.append(utf8.substr(0, first.size));
    utf8.remove_prefix(first.size);
  }
}

std::string visible(std::string_view utf8) {
  std::string result;
  appendVisible(utf8, result);
  return result;
}

}  // namespace qps
