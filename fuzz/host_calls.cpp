// SPDX-License-Identifier: MIT
//
// What only calls in an order of the input's choosing can show, on a host of which two calls fail:
// sheets opened anywhere, listings that replace listings, items taken after a failure. The input:
// two faults of four bytes, a byte of flags, sixteen operations, the file.
#include "fuzz/input_bytes.h"
#include "fuzz/session.h"
#include "olefio/get_ole_interface.h"

namespace {

using namespace qps::fuzz;

constexpr std::size_t kOperations = 16;
constexpr unsigned kFailingSteps = 7;  // those of a host with a real library

void takeFault(InputBytes& input, RecordingHost& host) {
  const unsigned step = input.u8() % (kFailingSteps + 1);
  const std::uint8_t shape = input.u8();
  Fault fault{.step = static_cast<Step>(step), .nth = input.u8() + 1U, .forGood = (shape & 1) != 0};
  const std::uint8_t shortBy = input.u8();
  if ((shape & 2) != 0) fault.shortBy = shortBy;
  if (step < kFailingSteps) host.failToo(fault);
}

// One reader and at most one open sheet, as the host's one stream allows.
class Caller {
 public:
  explicit Caller(RecordingHost& host) : host_(host) {}
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;
  ~Caller() {
    closeSheet();
    QPSCloseReader(reader_);
  }

  void run(std::uint8_t operation) {
    const unsigned detail = operation >> 3;
    const unsigned call = operation & 7;
    if (call == 0) renewReader();
    if (call == 1) list(detail % 4);
    if (call == 2 && !sheets_.empty()) open(sheets_[detail % sheets_.size()].startOffset);
    if (call == 3) open(detail * 16);
    if (call == 4) takeItems(1);
    if (call == 5) takeItems(256);
    if (call == 6) closeSheet();
    if (call == 7) {
      std::uint32_t charSet = 1;
      require(QPSGetCharSet(reader_, &charSet) == 0 && charSet == 0, "texts come as they are");
    }
  }

 private:
  void renewReader() {
    closeSheet();
    QPSCloseReader(reader_);
    sheets_.clear();
    reader_ =
        QPSAllocateReader(&host_, nullptr, host_.stream(), host_.services(), nullptr, nullptr);
  }

  void list(std::uint32_t selector) {
    closeSheet();
    const WorkMeter work(host_, kCompoundWork);
    if (selector == 0) {
      // A listing that fails leaves the table of the one before it.
      auto sheets = listSheets(host_, reader_, linkedReader());
      if (!sheets.empty()) sheets_ = std::move(sheets);
    } else {
      SSWorkSheetList list{0xA5A5A5A5, nullptr};
      require(QPSGetWorkSheetInfo(reader_, &list, selector) == 1 && list.entries == nullptr,
              "other selectors do nothing");
    }
    work.check();
  }

  void open(std::uint32_t offset) {
    closeSheet();
    const WorkMeter work(host_, kCompoundWork);
    sheet_ = QPSInitSheet(reader_, &host_, offset, RecordingHost::itemAlloc, this);
    work.check();
    require((sheet_ != nullptr) == host_.file().isOpen(), "the stream is open while the sheet is");
    taker_ = ItemTaker(host_, sheet_, linkedReader());
  }

  void takeItems(std::size_t most) {
    for (std::size_t i = 0; sheet_ != nullptr && i < most && taker_.take(); ++i) {
    }
  }

  void closeSheet() {
    require(QPSCloseSheet(sheet_) == (sheet_ != nullptr ? 0 : -1), "closing says what it did");
    require(!host_.file().isOpen(), "closing closes the stream");
    sheet_ = nullptr;
  }

  RecordingHost& host_;
  QPSReader* reader_ = nullptr;
  QPSSheet* sheet_ = nullptr;
  ItemTaker taker_{host_, nullptr, linkedReader()};
  std::vector<SSWorkSheetEntry> sheets_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputBytes input(data, size);
  InputBytes faults(input.take(8));
  const std::uint8_t flags = input.u8();
  const auto operations = input.take(kOperations);
  RecordingHost host(copyOf(input.rest()));
  host.oleEntryPoint = GetOLEInterface;
  host.seekBeyondEnd = (flags & 1) != 0;
  takeFault(faults, host);
  takeFault(faults, host);
  {
    Caller caller(host);
    for (const std::uint8_t operation : operations)
      caller.run(operation);
  }
  require(host.state() == "clean", "nothing is left open, loaded or allocated");
  return 0;
}
