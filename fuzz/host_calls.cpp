// SPDX-License-Identifier: MIT
//
// Sequences of host calls that the input chooses, on a host of which two calls fail as the input
// says. The input: two faults of four bytes, a byte of flags, sixteen operations, the file.
#include <array>

#include <qpsreader/worksheet_list.h>
#include "fuzz/input_bytes.h"
#include "fuzz/session.h"

namespace {

using namespace qps::fuzz;

constexpr size_t kOperations = 16;

Fault takeFault(InputBytes& input) {
  Fault fault;
  fault.step = static_cast<Step>(input.u8() % (static_cast<size_t>(Step::kSteps) + 1));
  const uint8_t shape = input.u8();
  fault.forGood = (shape & 1) != 0;
  fault.nth = input.u8() + 1U;
  const uint8_t shortBy = input.u8();
  if ((shape & 2) != 0) fault.shortBy = shortBy;
  return fault;
}

// One reader and at most one open sheet, as the host's one stream allows.
class Caller {
 public:
  explicit Caller(LeanHost& host) : host_(host) {}
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;
  ~Caller() {
    closeSheet();
    QPSCloseReader(reader_);
  }

  void run(uint8_t operation) {
    const uint8_t detail = operation >> 3;
    switch (operation & 7) {
      case 0:
        renewReader();
        break;
      case 1:
        list(detail % 4);
        break;
      case 2:
        openListed(detail);
        break;
      case 3:
        open(detail * 16U);
        break;
      case 4:
        takeItems(1);
        break;
      case 5:
        takeItems(256);
        break;
      case 6:
        closeSheet();
        break;
      default:
        uint32_t charSet = 1;
        require(QPSGetCharSet(reader_, &charSet) == 0 && charSet == 0, "texts come as they are");
        break;
    }
  }

 private:
  void renewReader() {
    closeSheet();
    QPSCloseReader(reader_);
    sheets_ = 0;
    reader_ =
        QPSAllocateReader(&host_, nullptr, host_.stream(), host_.services(), nullptr, nullptr);
  }

  void list(uint32_t selector) {
    closeSheet();
    SSWorkSheetList list{0xA5A5A5A5, nullptr};  // the count is an output
    const Work before = host_.work();
    const int32_t result = QPSGetWorkSheetInfo(reader_, &list, selector);
    requireWork(host_, before, kCompoundWork);
    require(!host_.isOpen(), "listing closes the stream");
    if (selector != 0) {
      require(result == 1 && list.entries == nullptr, "other selectors do nothing");
    } else {
      require((result == 1) == (list.entries != nullptr), "a table or none");
      if (result == 1) sheets_ = list.count;
    }
  }

  void openListed(uint32_t which) {
    if (reader_ == nullptr || reader_->sheetTable == nullptr) return;
    require(reader_->sheetCount == sheets_, "the reader keeps the last table");
    const auto* entries = static_cast<const SSWorkSheetEntry*>(reader_->sheetTable);
    open(entries[which % sheets_].startOffset);
  }

  void open(uint32_t offset) {
    closeSheet();
    const Work before = host_.work();
    sheet_ = QPSInitSheet(reader_, &host_, offset, LeanHost::itemAlloc, this);
    requireWork(host_, before, kCompoundWork);
    require(sheet_ != nullptr || !host_.isOpen(), "a failed opening closes the stream");
    taker_ = ItemTaker(host_, sheet_);
  }

  void takeItems(size_t most) {
    if (sheet_ == nullptr) return;
    Digest digest;
    for (size_t i = 0; i < most && taker_.take(digest); ++i) {
    }
  }

  void closeSheet() {
    require(QPSCloseSheet(sheet_) == (sheet_ != nullptr ? 0 : -1), "closing says what it did");
    require(!host_.isOpen(), "closing closes the stream");
    sheet_ = nullptr;
  }

  LeanHost& host_;
  QPSReader* reader_ = nullptr;
  QPSSheet* sheet_ = nullptr;
  ItemTaker taker_{host_, nullptr};
  uint32_t sheets_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  InputBytes input(data, size);
  const std::array faults = {takeFault(input), takeFault(input)};
  const uint8_t flags = input.u8();
  const auto operations = input.take(kOperations);
  LeanHost host(input.rest());
  host.faults = faults;
  host.seekBeyondEnd = (flags & 1) != 0;
  {
    Caller caller(host);
    for (const uint8_t operation : operations)
      caller.run(operation);
  }
  host.requireAtRest();
  return 0;
}
