// SPDX-License-Identifier: MIT
//
// TextBuffer: text built in a fixed area of the caller's, cut at its capacity. What may be longer
// than a WordText is made through it. Numbers are printed exactly and always with "." for the
// point, whatever the process's locale.
#ifndef QPSREADER_RENDER_TEXT_BUFFER_H
#define QPSREADER_RENDER_TEXT_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "reader/render/digits.h"
#include "reader/render/short_fixed.h"

namespace qps {

class TextBuffer {
 public:
  // An empty text in `area`, which has at least one byte and outlives the buffer. The text keeps at
  // most area.size() - 1 characters, and is zero-terminated for c_str().
  explicit TextBuffer(std::span<char> area)
      : begin_(area.data()), end_(begin_), last_(begin_ + area.size() - 1) {}
  TextBuffer(const TextBuffer&) = delete;
  TextBuffer& operator=(const TextBuffer&) = delete;

  // Each append keeps what fits and notes in truncated() when that is not all.
  void append(char character) {
    if (end_ == last_) {
      truncated_ = true;
      return;
    }
    *end_++ = character;
  }

  void append(std::string_view text) {
    truncated_ |= text.size() > room();
    end_ += text.copy(end_, room());
  }

  void append(WordText text) {
    if (room() < WordText::kWrittenBytes) [[unlikely]] {
      appendCut(text);
      return;
    }
    end_ = text.write(end_);
  }

  // As "%.*d" prints with `minDigits` of 0 to 8, but a 0 under 0 is "0".
  void appendInteger(std::int32_t value, int minDigits = 1) {
    append(integerText(value, minDigits));
  }

  // As "%.*f" prints a finite value, digit for digit; decimals are 0 to 511 (kMostDecimals).
  // Separators are for values that are not below 0: 1,234,567.89.
  void appendFixed(double value, int decimals, Separators separators = Separators::kNone) {
    WordText text;
    if (appendShortFixed(text, value, decimals, separators)) [[likely]] {
      append(text);
    } else {
      appendAnyFixed(value, decimals, separators);
    }
  }

  // As "%.*E" prints a finite value: 1.23E+05.
  void appendScientific(double value, int decimals);

  // Cuts the text to its first `size` characters; a shorter text stays as it is.
  void truncateTo(std::size_t size) { end_ = begin_ + std::min(size, this->size()); }

  std::size_t size() const { return static_cast<std::size_t>(end_ - begin_); }
  bool empty() const { return end_ == begin_; }
  std::string_view view() const { return {begin_, size()}; }
  const char* c_str() const {
    *end_ = '\0';
    return begin_;
  }

  // Something did not fit.
  bool truncated() const { return truncated_; }

 private:
  void appendCut(WordText text);
  void appendAnyFixed(double value, int decimals, Separators separators);
  std::size_t room() const { return static_cast<std::size_t>(last_ - end_); }

  char* begin_;
  char* end_;   // where the next character stands
  char* last_;  // the area's last byte: only ever a terminator
  bool truncated_ = false;
};

}  // namespace qps

#endif  // QPSREADER_RENDER_TEXT_BUFFER_H
