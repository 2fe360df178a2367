// SPDX-License-Identifier: MIT
//
// Readers on different threads, one call at a time: the threads take turns, as a host must make
// them do, and each gets what it would have got alone. The thread sanitizer runs this too.
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "tests/support/sheet_driver.h"

namespace qps::test {
namespace {

// One call at a time, by the one thread and then by the other.
class Turns {
 public:
  explicit Turns(std::size_t first) : next_(first) {}

  template <typename Call>
  auto take(std::size_t self, const Call& call) {
    std::unique_lock lock(mutex_);
    turnsChanged_.wait(lock, [&] { return next_ == self; });
    const auto result = call();
    next_ = 1 - self;
    turnsChanged_.notify_all();
    return result;
  }

 private:
  std::mutex mutex_;
  std::condition_variable turnsChanged_;
  std::size_t next_;
};

// The texts of the worksheet's cells. Takes `calls` turns, also when the items end before.
std::vector<std::string> readInTurns(Turns& turns, std::size_t self, std::uint32_t offset,
                                     std::size_t calls) {
  RecordingHost host(everyRecordNotebook().bytes());
  QPSReader reader{};
  reader.stream = host.stream();
  reader.services = host.services();
  QPSSheet* sheet = turns.take(self, [&] {
    return QPSInitSheet(&reader, &host, offset, RecordingHost::itemAlloc, nullptr);
  });
  std::vector<std::string> texts;
  for (std::size_t call = 0; call < calls; ++call) {
    SSItem item;
    const bool delivered = turns.take(self, [&] { return QPSProcessSheet(sheet, &item) == 0; });
    if (!delivered) continue;
    char* const text = item.kind == SSItemKindCell ? item.cell.text : nullptr;
    if (text != nullptr) {
      texts.emplace_back(text);
      host.freeItemText(text);
    } else if (item.kind == SSItemKindRecord37Text || item.kind == SSItemKindRecord38Text) {
      host.freePoolBlock(item.notebookText.text);
    }
  }
  turns.take(self, [&] { return QPSCloseSheet(sheet); });
  EXPECT_EQ(host.state(), "clean");
  return texts;
}

TEST(Threads, ReadersThatTakeTurnsDoNotDisturbEachOther) {
  const NotebookBuilder book = everyRecordNotebook();
  std::vector<std::string> expected;
  RecordingHost host(book.bytes());
  for (const Item& cell : readSheet(host, book.sheetOffset()).only(SSItemKindCell)) {
    if (cell.text) expected.push_back(*cell.text);
  }
  constexpr std::size_t kCalls = 100;
  Turns turns(0);
  std::vector<std::string> texts[2];
  std::thread other([&] { texts[1] = readInTurns(turns, 1, book.sheetOffset(1), kCalls); });
  texts[0] = readInTurns(turns, 0, book.sheetOffset(0), kCalls);
  other.join();
  EXPECT_EQ(texts[0], expected);
  EXPECT_EQ(texts[1], expected);
}

}  // namespace
}  // namespace qps::test
