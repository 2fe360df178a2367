// SPDX-License-Identifier: MIT
//
// The notebook's bytes become UTF-8. A notebook does not say which character set its texts are in,
// so the user does (--encoding).
#ifndef QPSREADER_TOOL_ENCODING_H
#define QPSREADER_TOOL_ENCODING_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tool/converter.h"

namespace qps {

class Decoder {
 public:
  // Throws UsageError when the encoding is not known (see converter.h), or when its digits and
  // letters are not those of ASCII: the reader writes numbers in ASCII.
  explicit Decoder(const std::string& encoding);
  const std::string& name() const { return name_; }

  // A byte that always stands for itself, so that a text of such bytes needs no decoding.
  bool isPlain(unsigned char byte) const { return plain_[byte]; }
  bool isPlain(std::string_view text) const;

  // Appends the text in UTF-8, well formed whatever a system's converter makes of it. A byte that
  // the encoding does not define becomes U+FFFD and counts.
  void append(std::string_view text, std::string& result) const;
  std::string decode(std::string_view text) const;

  // How many bytes had no meaning, in all texts so far.
  std::uint64_t undefinedBytes() const { return undefinedBytes_; }

 private:
  void appendByTable(std::string_view text, std::string& result) const;
  void appendByConverter(std::string_view text, std::string& result) const;
  void appendWellFormed(std::string_view utf8, std::string& result) const;
  void appendUndefined(std::string& result) const;

  std::string name_;
  std::unique_ptr<Converter> converter_;
  std::array<bool, 256> plain_{};
  std::array<std::string, 256> single_;  // each byte by itself in UTF-8; "" for an undefined one
  bool multibyte_ = false;               // some bytes begin a longer sequence
  mutable std::uint64_t undefinedBytes_ = 0;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_ENCODING_H
