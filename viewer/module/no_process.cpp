// SPDX-License-Identifier: MIT
//
// What the tool takes of its process and its system. A page has neither terminal nor processor
// time; encodings that are not built in are those of JavaScript's TextDecoder.
#include "tool/converter.h"
#include "tool/progress.h"
#include "tool/time_limit.h"
#include "viewer/module/host_calls.h"

namespace qps {

TimeLimit::TimeLimit(std::chrono::milliseconds limit) : limit_(limit), start_(0) {}

void TimeLimit::check() const {}

Progress::Progress(bool) : wanted_(false) {}

void Progress::clear() {}

void Progress::show() {}

namespace {

class TextDecoderConverter : public Converter {
 public:
  explicit TextDecoderConverter(const std::string& encoding) : encoding_(encoding) {}

  Result convert(std::string_view& text, std::string& result) override {
    const std::size_t before = result.size();
    result.resize(before + 4 * text.size());
    HostDecoded counts;
    const std::uint32_t how = hostDecode(encoding_.data(), encoding_.size(), text.data(),
                                         text.size(), result.data() + before, &counts);
    result.resize(before + counts.written);
    text.remove_prefix(counts.consumed);
    return static_cast<Result>(how);
  }

 private:
  std::string encoding_;
};

}  // namespace

std::unique_ptr<Converter> Converter::openOfSystem(const std::string& encoding) {
  if (!hostKnowsEncoding(encoding.data(), encoding.size())) return nullptr;
  return std::make_unique<TextDecoderConverter>(encoding);
}

}  // namespace qps
