// SPDX-License-Identifier: MIT
//
// For systems other than Linux, and for instrumented builds, which write files of their own.
#include "tool/sandbox.h"

namespace qps {

std::string Sandbox::description() const {
  return "none";
}

Sandbox enterSandbox(const std::string& /*outputFolder*/) {
  return {};
}

}  // namespace qps
