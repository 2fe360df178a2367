// SPDX-License-Identifier: MIT
//
// Decoder: at the start every byte is converted by itself. If each is a character or undefined, the
// encoding is a table of 256 texts: every code page of the notebooks' time but the East Asian ones.
// Those go through the converter text by text.
#include "tool/encoding.h"

#include "tool/status.h"

namespace qps {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

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
    result.append(character.empty() ? kReplacement : std::string_view(character));
    undefinedBytes_ += character.empty() ? 1 : 0;
  }
}

void Decoder::appendByConverter(std::string_view text, std::string& result) const {
  while (converter_->convert(text, result) != Converter::Result::kDone) {
    result.append(kReplacement);
    ++undefinedBytes_;
    text.remove_prefix(1);
  }
}

}  // namespace qps
