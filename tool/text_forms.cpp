// SPDX-License-Identifier: MIT
#include "tool/text_forms.h"

#include <array>
#include <cstddef>

namespace qps {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
  char32_t character;
  std::size_t size;  // in bytes
};

// The character at the start of a text that is not empty. One that is not well formed (overlong, a
// surrogate, cut short) is a single byte of U+FFFD.
Decoded firstCharacter(std::string_view text) {
  const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byteAt(0);
  if (lead < 0x80) return {lead, 1};

  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  constexpr std::array<char32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
  if (lead < 0xC2 || lead > 0xF4 || text.size() < size) return {kReplacement, 1};
  char32_t character = lead & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byteAt(i) & 0xC0U) != 0x80U) return {kReplacement, 1};
    character = character << 6 | (byteAt(i) & 0x3FU);
  }
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kLeast[size] || character > 0x10FFFF || surrogate) return {kReplacement, 1};
  return {character, size};
}

void appendCharacter(char32_t character, std::string& result) {
  const auto put = [&result](char32_t byte) { result.push_back(static_cast<char>(byte)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | character >> 6);
    put(0x80 | (character & 0x3F));
  } else {  // nothing beyond U+FFFF is ever put together here
    put(0xE0 | character >> 12);
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  }
}

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
