// SPDX-License-Identifier: MIT
#include <qpsreader/host/expected.hpp>

namespace qps {

const char* reasonName(Reason reason) {
  switch (reason) {
    case Reason::kUnreadable:
      return "unreadable";
    case Reason::kEmpty:
      return "empty";
    case Reason::kNotANotebook:
      return "not-a-notebook";
    case Reason::kProtected:
      return "protected";
    case Reason::kDamaged:
      return "damaged";
    case Reason::kMemoryLimit:
      return "memory-limit";
    case Reason::kLibraryMissing:
      return "library-missing";
  }
  return "";
}

void throwBadAccess(const Error& error) {
  throw BadExpectedAccess(error);
}

}  // namespace qps
