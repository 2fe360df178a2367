// SPDX-License-Identifier: MIT
//
// Output hands its blocks to the JavaScript: no result lies in the module's memory as a whole.
#include "tool/output.h"

#include "viewer/module/host_calls.h"

namespace qps {

Output::Output(std::FILE*) : file_(nullptr), terminal_(false) {}

void Output::flush() {
  const auto size = static_cast<std::size_t>(cursor_ - block_.get());
  cursor_ = block_.get();
  if (size > 0) hostWrite(block_.get(), size);
}

}  // namespace qps
