// SPDX-License-Identifier: MIT
//
// Exceptions in a module that cannot catch any: each one ends the instance and becomes a
// JavaScript error. So nothing of the tool's sources changes for the module, and no state that an
// exception left behind is ever used again.
#include <cstdlib>
#include <cstring>
#include <new>
#include <typeinfo>

#include <qpsreader/host/expected.hpp>
#include "tool/status.h"
#include "viewer/module/host_calls.h"

namespace {

using qps::Failure;
using qps::Reason;
using qps::Status;
using qps::UsageError;

Reason reasonOf(Status status) {
  switch (status) {
    case Status::kNotANotebook:
      return Reason::kNotANotebook;
    case Status::kRefused:
      return Reason::kProtected;
    case Status::kDamaged:
      return Reason::kDamaged;
    case Status::kLimit:
      return Reason::kMemoryLimit;
    default:
      return Reason::kUnreadable;
  }
}

[[noreturn]] void failWith(const char* reason, const std::string& message) {
  qps::hostFail(reason, message.data(), message.size());
}

[[noreturn]] void outOfMemory() {
  constexpr const char* kMessage = "the machine has not enough memory for it";
  qps::hostFail(qps::reasonName(Reason::kMemoryLimit), kMessage, std::strlen(kMessage));
}

// When operator new finds no memory, it calls this before it gives up.
const std::new_handler previous = std::set_new_handler(&outOfMemory);

}  // namespace

extern "C" {

void* __cxa_allocate_exception(std::size_t size) {
  return std::malloc(size);
}

[[noreturn]] void __cxa_throw(void* thrown, std::type_info* type, void (*)(void*)) {
  if (*type == typeid(Failure)) {
    const auto& failure = *static_cast<const Failure*>(thrown);
    failWith(qps::reasonName(reasonOf(failure.status)), failure.reason);
  }
  if (*type == typeid(UsageError))
    failWith("encoding", static_cast<const UsageError*>(thrown)->reason);
  outOfMemory();  // std::bad_alloc; nothing else is thrown
}
}
