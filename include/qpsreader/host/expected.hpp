// SPDX-License-Identifier: MIT
//
// Errors as values: why a notebook could not be read, and a result that is either a value or that
// reason. (C++20 has no std::expected; the operations have its names.)
#ifndef QPSREADER_HOST_EXPECTED_HPP
#define QPSREADER_HOST_EXPECTED_HPP

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace qps {

enum class Reason : std::uint8_t {
  kUnreadable,  // the file cannot be opened or read: missing, no permission, a folder, an I/O error
  kEmpty,       // the file has no bytes
  kNotANotebook,    // some other kind of file; the message names the kind where it can be told
  kProtected,       // a notebook that is marked as protected by a password
  kDamaged,         // a notebook that is cut short or whose records cannot be followed
  kMemoryLimit,     // OpenOptions::memoryLimit, or the machine's memory, was not enough
  kLibraryMissing,  // a compound document, and the compound-document library was not found
};

// The reason's name for logs and counters: "unreadable", "empty", "not-a-notebook", "protected",
// "damaged", "memory-limit", "library-missing".
const char* reasonName(Reason reason);

// `message` is one line without the file's name and without a full stop, fit to follow "FILE: ".
struct Error {
  Reason reason = Reason::kUnreadable;
  std::string message;
};

// The error of everything that met the memory limit.
inline Error memoryLimitError() {
  return {Reason::kMemoryLimit, "the memory limit was reached"};
}

// What Expected::value throws where there is none: its what() is the error's message.
class BadExpectedAccess : public std::runtime_error {
 public:
  explicit BadExpectedAccess(const Error& error)
      : std::runtime_error(error.message), reason_(error.reason) {}

  Reason reason() const { return reason_; }

 private:
  Reason reason_;
};

[[noreturn]] void throwBadAccess(const Error& error);

// A T, or the Error that stands in its place.
template <class T>
class [[nodiscard]] Expected {
 public:
  Expected(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  Expected(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

  explicit operator bool() const { return has_value(); }
  // NOLINTNEXTLINE(readability-identifier-naming): as std::expected has it
  bool has_value() const { return state_.index() == 0; }

  // The value: only after the test above said true. What it refers to (a notebook's worksheets)
  // goes with it, so `->` is not for a temporary: keep the result first.
  T& operator*() & { return *std::get_if<0>(&state_); }
  const T& operator*() const& { return *std::get_if<0>(&state_); }
  T&& operator*() && { return std::move(*std::get_if<0>(&state_)); }
  T* operator->() & { return std::get_if<0>(&state_); }
  const T* operator->() const& { return std::get_if<0>(&state_); }
  T* operator->() const&& = delete;

  // The value, tested: throws BadExpectedAccess when there is none.
  T& value() & { return checked(), **this; }
  const T& value() const& { return checked(), **this; }
  T&& value() && { return checked(), *std::move(*this); }

  // The error: only after the test above said false.
  const Error& error() const& { return *std::get_if<1>(&state_); }
  Error error() && { return std::move(*std::get_if<1>(&state_)); }

 private:
  void checked() const {
    if (!has_value()) throwBadAccess(error());
  }

  std::variant<T, Error> state_;
};

}  // namespace qps

#endif  // QPSREADER_HOST_EXPECTED_HPP
