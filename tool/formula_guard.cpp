// SPDX-License-Identifier: MIT
#include "tool/formula_guard.h"

#include <cstddef>

namespace qps {
namespace {

constexpr auto kNone = std::string_view::npos;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool isBeyondAscii(char c) {
  return static_cast<unsigned char>(c) >= 0x80;
}

void skipWhile(std::string_view& text, bool (*matches)(char)) {
  while (!text.empty() && matches(text.front()))
    text.remove_prefix(1);
}

// After the signs.
bool isNumber(std::string_view text) {
  // A currency or a blank before the digits: no ASCII letter, which could begin a name.
  skipWhile(text, [](char c) { return c == '$' || c == ' ' || isBeyondAscii(c); });
  if (text.empty() || !(isDigit(text.front()) || text.front() == '.')) return false;
  skipWhile(text, [](char c) { return isDigit(c) || c == '.' || c == ',' || c == ' '; });

  if (text.size() >= 3 && text[0] == 'E' && (text[1] == '+' || text[1] == '-')) {
    text.remove_prefix(2);
    skipWhile(text, isDigit);
  }
  // A unit: nothing that a formula could be made of.
  skipWhile(text, [](char c) { return isLetter(c) || c == '%' || c == ' ' || isBeyondAscii(c); });
  return text.empty();
}

}  // namespace

bool looksLikeFormula(std::string_view utf8) {
  for (const std::string_view wide : {"\uFF1D", "\uFF0B", "\uFF0D", "\uFF20"})  // = + - @
    if (utf8.starts_with(wide)) return true;
  if (utf8.empty() || std::string_view("=@+-\t\r\n").find(utf8.front()) == kNone) return false;
  const std::size_t afterSigns = utf8.find_first_not_of("+-");
  if (afterSigns == kNone) return false;  // a bar
  return afterSigns == 0 || !isNumber(utf8.substr(afterSigns));
}

void appendGuarded(std::string_view utf8, char delimiter, std::string& result) {
  if (looksLikeFormula(utf8)) result += '\'';
  bool mayBegin = false;
  for (; !utf8.empty(); utf8.remove_prefix(1)) {
    const char byte = utf8.front();
    const bool endsLine = byte == '\r' || byte == '\n';
    const bool separates = std::string_view(";,\t").find(byte) != kNone && byte != delimiter;
    if (mayBegin && !endsLine && !separates && looksLikeFormula(utf8)) result += '\'';
    result += byte;
    mayBegin = endsLine || separates;
  }
}

}  // namespace qps
