// SPDX-License-Identifier: MIT
//
// What the module asks of the JavaScript around it (viewer/js/instance.js).
#ifndef QPSREADER_VIEWER_HOST_CALLS_H
#define QPSREADER_VIEWER_HOST_CALLS_H

#include <cstddef>
#include <cstdint>

namespace qps {

// Takes bytes of the output of the call that runs.
[[clang::import_module("qps"), clang::import_name("write")]] void hostWrite(const char* bytes,
                                                                            std::size_t size);

// Ends the call, and with it this instance, which must not be called again: the JavaScript throws
// an error with this reason (one of reasonName's, or "encoding") and message.
[[noreturn, clang::import_module("qps"), clang::import_name("fail")]] void hostFail(
    const char* reason, const char* message, std::size_t messageBytes);

// Whether TextDecoder has this encoding.
[[clang::import_module("qps"), clang::import_name("knowsEncoding")]] bool hostKnowsEncoding(
    const char* encoding, std::size_t encodingBytes);

struct HostDecoded {
  std::uint32_t consumed = 0;  // bytes of the text
  std::uint32_t written = 0;   // bytes of UTF-8
};

// Writes the beginning of a text, as far as it is well formed, to `utf8`, which has room for four
// bytes for each of the text's. Returns a Converter::Result.
[[clang::import_module("qps"), clang::import_name("decode")]] std::uint32_t hostDecode(
    const char* encoding, std::size_t encodingBytes, const char* text, std::size_t textBytes,
    char* utf8, HostDecoded* counts);

}  // namespace qps

#endif  // QPSREADER_VIEWER_HOST_CALLS_H
