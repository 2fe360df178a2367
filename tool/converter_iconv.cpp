// SPDX-License-Identifier: MIT
#include <iconv.h>

#include <cerrno>
#include <cstddef>

#include "tool/converter.h"

namespace qps {
namespace {

class IconvConverter final : public Converter {
 public:
  explicit IconvConverter(iconv_t handle) : handle_(handle) {}
  ~IconvConverter() override { iconv_close(handle_); }
  IconvConverter(const IconvConverter&) = delete;
  IconvConverter& operator=(const IconvConverter&) = delete;

  Result convert(std::string_view& text, std::string& result) override {
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);  // back to the initial state
    auto* from = const_cast<char*>(text.data());         // iconv's signature; it only reads there
    std::size_t fromBytes = text.size();
    int error = E2BIG;
    while (error == E2BIG) {
      char block[512];
      char* to = block;
      std::size_t toBytes = sizeof block;
      error = iconv(handle_, &from, &fromBytes, &to, &toBytes) == std::size_t(-1) ? errno : 0;
      result.append(block, sizeof block - toBytes);
    }
    text.remove_prefix(text.size() - fromBytes);
    appendHeldBack(result);
    return error == 0 ? Result::kDone : error == EINVAL ? Result::kUnfinished : Result::kUndefined;
  }

 private:
  // Some encodings hold a letter back, in case an accent follows it.
  void appendHeldBack(std::string& result) {
    char block[32];
    char* to = block;
    std::size_t toBytes = sizeof block;
    iconv(handle_, nullptr, nullptr, &to, &toBytes);
    result.append(block, sizeof block - toBytes);
  }

  iconv_t handle_;
};

}  // namespace

std::unique_ptr<Converter> Converter::openOfSystem(const std::string& encoding) {
  // "//IGNORE" and its kin would drop characters without a word.
  if (encoding.find('/') != std::string::npos) return nullptr;
  const iconv_t handle = iconv_open("UTF-8", encoding.c_str());
  if (reinterpret_cast<std::intptr_t>(handle) == -1) return nullptr;
  return std::make_unique<IconvConverter>(handle);
}

}  // namespace qps
