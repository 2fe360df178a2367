// SPDX-License-Identifier: MIT
//
// Decoder: at the start every byte is converted by itself. If each is a character or undefined, the
// encoding is a table of 256 texts: every code page of the notebooks' time but the East Asian ones.
// Those go through the converter text by text.
#include "tool/encoding.h"

#include "tool/status.h"
#include "tool/utf8.h"

namespace qps {
namespace {

bool isWellFormed(std::string_view utf8) {
  while (!utf8.empty()) {
    const Decoded first = firstCharacter(utf8);
    if (!first.valid) return false;
    utf8.remove_prefix(first.size);
  }
  return true;
}

}  // namespace

Decoder::Decoder(const std::string& encoding)
    : name_(encoding), converter_(Converter::open(encoding)) {
  if (converter_ == nullptr)
    throw UsageError{"--encoding: '" + encoding + "' is not known (iconv -l lists what is)"};

  for (unsigned byte = 1; byte < 256; ++byte) {
    const char text = static_cast<char>(byte);
    std::string_view rest(&text, 1);
    if (converter_->convert(rest, single_[byte]) == Converter::Result::kUnfinished)
      multibyte_ = true;
    if (!isWellFormed(single_[byte])) single_[byte].clear();
    plain_[byte] = byte < 0x80 && single_[byte] == std::string_view(&text, 1);
  }
  for (const char needed : std::string_view("09AZaz +-.,%$():/"))
    if (!isPlain(static_cast<unsigned char>(needed)))
      throw UsageError{"--encoding: '" + encoding + "' does not contain ASCII"};
}

bool Decoder::isPlain(std::string_view text) const {
  for (const char byte : text)
    if (!plain_[static_cast<unsigned char>(byte)]) return false;
  return true;
}

void Decoder::append(std::string_view text, std::string& result) const {
  if (multibyte_)
    appendByConverter(text, result);
  else
    appendByTable(text, result);
}

std::string Decoder::decode(std::string_view text) const {
  std::string result;
  append(text, result);
  return result;
}

void Decoder::appendByTable(std::string_view text, std::string& result) const {
  for (const char byte : text) {
    const std::string& character = single_[static_cast<unsigned char>(byte)];
    if (character.empty())
      appendUndefined(result);
    else
      result.append(character);
  }
}

void Decoder::appendByConverter(std::string_view text, std::string& result) const {
  std::string part;
  for (;;) {
    const std::string_view rest = text;
    part.clear();
    const bool done = converter_->convert(text, part) == Converter::Result::kDone;
    // Where the fault was is not known then; byte by byte nothing is dropped.
    if (!done && text.empty()) return appendByTable(rest, result);
    appendWellFormed(part, result);
    if (done) return;
    appendUndefined(result);
    text.remove_prefix(1);
  }
}

void Decoder::appendWellFormed(std::string_view utf8, std::string& result) const {
  while (!utf8.empty()) {
    const Decoded first = firstCharacter(utf8);
    if (first.valid)
      result.append(utf8.substr(0, first.size));
    else
      appendUndefined(result);
    utf8.remove_prefix(first.size);
  }
}

void Decoder::appendUndefined(std::string& result) const {
  appendCharacter(kReplacement, result);
  ++undefinedBytes_;
}

}  // namespace qps
