// SPDX-License-Identifier: MIT
//
// From a character set to UTF-8. A few are built in (converter_built_in.cpp); the others are taken
// of the system: iconv (converter_iconv.cpp), or the code pages of Windows (converter_windows.cpp).
#ifndef QPSREADER_TOOL_CONVERTER_H
#define QPSREADER_TOOL_CONVERTER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace qps {

class Converter {
 public:
  enum class Result : std::uint8_t {
    kDone,
    kUndefined,   // `text` begins with bytes that mean nothing
    kUnfinished,  // `text` is the beginning of a character
  };

  // Null when neither this program nor the system knows the encoding.
  static std::unique_ptr<Converter> open(const std::string& encoding);
  virtual ~Converter() = default;

  // Appends what `text` means, from the initial state, and takes that from its front: all of it
  // when the result is kDone, and otherwise what stands before the fault. A system's converter may
  // find a fault at the very end, with nothing left, and may append what is not well formed.
  virtual Result convert(std::string_view& text, std::string& result) = 0;

 private:
  static std::unique_ptr<Converter> openOfSystem(const std::string& encoding);
};

}  // namespace qps

#endif  // QPSREADER_TOOL_CONVERTER_H
