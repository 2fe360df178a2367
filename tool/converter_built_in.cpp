// SPDX-License-Identifier: MIT
//
// The encodings that need nothing of the system: the default, and the plainest ones.
#include <array>

#include "tool/converter.h"
#include "tool/utf8.h"

namespace qps {
namespace {

constexpr char32_t kUndefined = 0;

// The bytes 0x80 to 0x9F of windows-1252. Five of them mean nothing.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,       // 88
    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,  // 98
};

char32_t fromWindows1252(unsigned char byte) {
  return byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80U] : byte;
}
char32_t fromLatin1(unsigned char byte) {
  return byte;
}
char32_t fromAscii(unsigned char byte) {
  return byte < 0x80 ? byte : kUndefined;
}

class ByteConverter final : public Converter {
 public:
  explicit ByteConverter(char32_t (*characterOf)(unsigned char)) : characterOf_(characterOf) {}

  Result convert(std::string_view& text, std::string& result) override {
    for (; !text.empty(); text.remove_prefix(1)) {
      const char32_t character = characterOf_(static_cast<unsigned char>(text.front()));
      if (character == kUndefined) return Result::kUndefined;
      appendCharacter(character, result);
    }
    return Result::kDone;
  }

 private:
  char32_t (*characterOf_)(unsigned char);
};

class Utf8Converter final : public Converter {
 public:
  Result convert(std::string_view& text, std::string& result) override {
    while (!text.empty()) {
      const Decoded first = firstCharacter(text);
      if (!first.valid) return Result::kUnfinished;
      result.append(text.substr(0, first.size));
      text.remove_prefix(first.size);
    }
    return Result::kDone;
  }
};

struct BuiltIn {
  std::string_view name;                   // in capitals
  char32_t (*characterOf)(unsigned char);  // null: UTF-8
};

constexpr BuiltIn kBuiltIn[] = {
    {"WINDOWS-1252", fromWindows1252},
    {"CP1252", fromWindows1252},
    {"MS-ANSI", fromWindows1252},
    {"ISO-8859-1", fromLatin1},
    {"ISO8859-1", fromLatin1},
    {"ISO_8859-1", fromLatin1},
    {"LATIN1", fromLatin1},
    {"L1", fromLatin1},
    {"ASCII", fromAscii},
    {"US-ASCII", fromAscii},
    {"UTF-8", nullptr},
    {"UTF8", nullptr},
};

}  // namespace

std::unique_ptr<Converter> Converter::open(const std::string& encoding) {
  std::string name = encoding;
  for (char& c : name)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  for (const BuiltIn& row : kBuiltIn) {
    if (row.name != name) continue;
    if (row.characterOf == nullptr) return std::make_unique<Utf8Converter>();
    return std::make_unique<ByteConverter>(row.characterOf);
  }
  return openOfSystem(encoding);
}

}  // namespace qps
