// SPDX-License-Identifier: MIT
//
// Decoder: at the start every byte is shown to iconv by itself. If each is a character or undefined
// the encoding is a table of 256 texts, which is every code page of the notebooks' time but the
// East Asian ones; those go through iconv text by text.
#include "tool/encoding.h"

#include <iconv.h>

#include <cerrno>

#include "tool/status.h"

namespace qps {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

const auto kNoConverter = reinterpret_cast<iconv_t>(-1);

}  // namespace

struct Decoder::Converter {
  explicit Converter(const std::string& encoding) : handle(iconv_open("UTF-8", encoding.c_str())) {}
  ~Converter() {
    if (handle != kNoConverter) iconv_close(handle);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // Converts up to the end of `text` or to the first bytes that have no meaning, from which on
  // `text` is left. Returns 0, EILSEQ or EINVAL (an unfinished sequence).
  int convert(std::string_view& text, std::string& result) const {
    auto* from = const_cast<char*>(text.data());  // iconv's signature; it does not write there
    std::size_t fromBytes = text.size();
    int error = E2BIG;
    while (error == E2BIG) {
      char block[512];
      char* to = block;
      std::size_t toBytes = sizeof block;
      error = iconv(handle, &from, &fromBytes, &to, &toBytes) == std::size_t(-1) ? errno : 0;
      // Some encodings hold a letter back, in case an accent follows it.
      if (error == 0) iconv(handle, nullptr, nullptr, &to, &toBytes);
      result.append(block, sizeof block - toBytes);
    }
    text.remove_prefix(text.size() - fromBytes);
    return error;
  }

  void reset() const { iconv(handle, nullptr, nullptr, nullptr, nullptr); }

  iconv_t handle;
};

Decoder::Decoder(const std::string& encoding)
    : name_(encoding), converter_(std::make_unique<Converter>(encoding)) {
  // "//IGNORE" and its kin would drop characters without a word.
  if (converter_->handle == kNoConverter || encoding.find('/') != std::string::npos)
    throw UsageError{"--encoding: '" + encoding + "' is not known (iconv -l lists what is)"};

  for (unsigned byte = 1; byte < 256; ++byte) {
    const char text = static_cast<char>(byte);
    std::string_view rest(&text, 1);
    converter_->reset();
    const int error = converter_->convert(rest, single_[byte]);
    if (error == EINVAL) multibyte_ = true;
    plain_[byte] = byte < 0x80 && single_[byte] == std::string_view(&text, 1);
  }
  converter_->reset();
  for (const char digitOrLetter : std::string_view("09AZaz +-.,%$():/"))
    if (!plain_[static_cast<unsigned char>(digitOrLetter)])
      throw UsageError{"--encoding: '" + encoding + "' does not contain ASCII"};
}

Decoder::~Decoder() = default;

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
  while (converter_->convert(text, result) != 0) {
    result.append(kReplacement);
    ++undefinedBytes_;
    text.remove_prefix(1);
    converter_->reset();
  }
  converter_->reset();
}

}  // namespace qps
