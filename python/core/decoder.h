// SPDX-License-Identifier: MIT
//
// The notebook's bytes become UTF-8 by a codec of Python's.
#ifndef QPSREADER_PYTHON_DECODER_H
#define QPSREADER_PYTHON_DECODER_H

#include <array>
#include <string>
#include <string_view>

namespace qps::python {

// Thrown when Python's error is already set in this thread.
struct PythonError {};

class Decoder {
 public:
  // `single` has what each byte from 0 to 255 stands for, in UTF-8, when `multibyte` is false;
  // otherwise the codec is asked for every text that is not ASCII.
  Decoder(std::string encoding, bool multibyte, std::array<std::string, 256> single)
      : encoding_(std::move(encoding)), multibyte_(multibyte), single_(std::move(single)) {}

  // Appends the text in UTF-8. Takes the GIL for a multi-byte encoding, so the caller must not hold
  // what a thread with the GIL waits for. Throws PythonError when the codec fails.
  void append(std::string_view text, std::string& utf8) const;
  std::string decode(std::string_view text) const;

 private:
  void appendByCodec(std::string_view text, std::string& utf8) const;

  std::string encoding_;
  bool multibyte_;
  std::array<std::string, 256> single_;
};

}  // namespace qps::python

#endif  // QPSREADER_PYTHON_DECODER_H
