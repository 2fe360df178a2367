// SPDX-License-Identifier: MIT
#include "python/core/python_api.h"

#include "python/core/decoder.h"

#include <algorithm>

namespace qps::python {

void Decoder::append(std::string_view text, std::string& utf8) const {
  const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
  if (std::all_of(text.begin(), text.end(), isAscii)) {
    // ASCII stands for itself in a single-byte encoding too: open() refuses any other.
    utf8.append(text);
  } else if (multibyte_) {
    appendByCodec(text, utf8);
  } else {
    for (const char byte : text)
      utf8.append(single_[static_cast<unsigned char>(byte)]);
  }
}

std::string Decoder::decode(std::string_view text) const {
  std::string utf8;
  append(text, utf8);
  return utf8;
}

void Decoder::appendByCodec(std::string_view text, std::string& utf8) const {
  const GilHeld gil;
  const Object decoded(PyUnicode_Decode(text.data(), static_cast<Py_ssize_t>(text.size()),
                                        encoding_.c_str(), "replace"));
  if (!decoded) throw PythonError();
  const Object bytes(PyUnicode_AsEncodedString(decoded.get(), "utf-8", "replace"));
  if (!bytes) throw PythonError();
  utf8.append(PyBytes_AsString(bytes.get()), static_cast<std::size_t>(PyBytes_Size(bytes.get())));
}

}  // namespace qps::python
