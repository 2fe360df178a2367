// SPDX-License-Identifier: MIT
//
// What is measured: a notebook in memory, a host as lean as there can be, and a reader over it. The
// services are those of the embedded host; the texts come from a bump allocator.
#ifndef QPSREADER_BENCH_SUBJECT_H
#define QPSREADER_BENCH_SUBJECT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <qpsreader/qps_reader.h>
#include <qpsreader/ss_item.h>
#include <qpsreader/worksheet_list.h>
#include "bench/lean_stream.h"
#include "host/heap_pool.hpp"
#include "host/host_services.hpp"
#include "tests/support/notebook_builder.h"

namespace qps::bench {

class TextBlocks {
 public:
  // Of the form that SSItemAlloc has; the context is the object.
  static void* allocate(void* context, void*, std::size_t size, std::uint32_t) {
    auto& self = *static_cast<TextBlocks*>(context);
    if (size > static_cast<std::size_t>(self.end_ - self.text_)) return self.allocateSlow(size);
    char* text = self.text_;
    self.text_ += size;
    return text;
  }

  // Ends the life of all texts; their blocks serve the next ones.
  void clear() {
    next_ = 0;
    text_ = end_ = nullptr;
  }

 private:
  static constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

  void* allocateSlow(std::size_t size) {
    if (size > kBlockBytes) return nullptr;
    if (next_ == blocks_.size())
      blocks_.push_back(std::make_unique_for_overwrite<char[]>(kBlockBytes));
    char* block = blocks_[next_++].get();
    text_ = block + size;
    end_ = block + kBlockBytes;
    return block;
  }

  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t next_ = 0;
  char* text_ = nullptr;
  char* end_ = nullptr;
};

class Subject {
 public:
  explicit Subject(test::Bytes file) : bytes_(std::move(file)) {
    qpsGetSSReaderInterface(&operations_);
    reader_ = operations_.allocateReader(nullptr, nullptr, &stream_, &services_, nullptr, nullptr);
    list();
  }
  ~Subject() { operations_.closeReader(reader_); }
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;

  SSStream* openedStream() {
    stream_.open(&stream_);
    return &stream_;
  }
  TextBlocks& texts() { return texts_; }

  // Lists the worksheets; how many there are.
  std::uint32_t list() {
    sheets_ = {};
    return operations_.getWorkSheetInfo(reader_, &sheets_, 0) != 0 ? sheets_.count : 0;
  }

  // Where the worksheet with this index of the last listing begins.
  std::uint32_t offset(std::uint32_t sheet = 0) const { return sheets_.entries[sheet].startOffset; }

  void openAndClose(std::uint32_t sheet = 0) { operations_.closeSheet(open(sheet)); }

  // Takes all items of a worksheet and calls `onItem` with each; how many there were.
  template <typename OnItem>
  std::size_t items(std::uint32_t index, OnItem onItem) {
    QPSSheet* sheet = open(index);
    if (sheet == nullptr) return 0;
    SSItem item;
    std::size_t count = 0;
    for (; operations_.processSheet(sheet, &item) == 0; ++count)
      onItem(item);
    operations_.closeSheet(sheet);
    return count;
  }
  std::size_t items(std::uint32_t index = 0) {
    return items(index, [](const SSItem&) {});
  }

 private:
  QPSSheet* open(std::uint32_t sheet) {
    return operations_.initSheet(reader_, &texts_, offset(sheet), TextBlocks::allocate, nullptr);
  }

  test::Bytes bytes_;
  LeanStream stream_{bytes_};
  HeapPool pool_;
  HostServices services_{pool_};
  TextBlocks texts_;
  SSReaderInterface operations_;
  QPSReader* reader_;
  SSWorkSheetList sheets_{};
};

// Gives a subject that is made when it is first asked for.
using LazySubject = std::function<Subject&()>;

inline LazySubject lazySubject(std::function<test::Bytes()> make) {
  return
      [make = std::move(make), made = std::make_shared<std::unique_ptr<Subject>>()]() -> Subject& {
        if (*made == nullptr) *made = std::make_unique<Subject>(make());
        return **made;
      };
}

}  // namespace qps::bench

#endif  // QPSREADER_BENCH_SUBJECT_H
