// SPDX-License-Identifier: MIT
#include "fuzz/session.h"

#include "olefio/get_ole_interface.h"

namespace qps::fuzz {

namespace {

constexpr std::size_t kMostSheets = 3;

template <typename Value>
std::string_view viewOf(const Value& value) {
  return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

void add(const QPSCellValue& value, Digest& digest) {
  digest.add(viewOf(value.kind));
  digest.add(viewOf(value.number));
  digest.add({value.text, value.textBytes});
  digest.add(value.formatText != nullptr ? value.formatText : "");
  digest.add(value.styleName != nullptr ? value.styleName : "");
}

void readUpTo(std::size_t mostItems, RecordingHost& host, QPSReader* handle, std::uint32_t offset,
              const WorkLimit& limit, Digest& digest) {
  const WorkMeter opening(host, limit);
  QPSSheet* sheet =
      QPSInitSheet(handle, host.itemContext(), offset, RecordingHost::itemAlloc, nullptr);
  opening.check();
  require((sheet != nullptr) == host.file().isOpen(), "the stream is open while the sheet is");
  if (sheet == nullptr) return;
  const WorkMeter reading(host, limit);
  ItemTaker taker(host, sheet, linkedReader());
  std::size_t taken = 0;
  for (; taken < mostItems; ++taken) {
    const auto item = taker.take();
    if (!item) break;
    digest.add(viewOf(item->raw));
    digest.add(item->text ? *item->text : std::string("\x01"));
    if (item->kind() == SSItemKindCell) add(taker.value(), digest);
  }
  // Each item has a text to give back, each row a node of the list.
  reading.check(4 * taken);
  require(QPSCloseSheet(sheet) == 0 && !host.file().isOpen(), "closing closes the stream");
  digest.add(viewOf(taken));
}

}  // namespace

void WorkMeter::check(std::uint64_t moreCalls) const {
  const std::uint64_t size = host_.file().bytes().size();
  require(host_.hostCalls() - calls_ <= limit_.callsPerByte * size + limit_.calls + moreCalls,
          "host calls that the bytes of the file account for");
  require(host_.bytesRead() - bytes_ <= limit_.bytesPerByte * size + limit_.bytes,
          "bytes read that the bytes of the file account for");
  require(host_.peakPoolBytes() <= limit_.poolPerByte * size + limit_.pool,
          "memory that the bytes of the file account for");
}

std::uint64_t visitNotebook(RecordingHost& host, std::size_t mostItems, const WorkLimit& limit) {
  host.oleEntryPoint = GetOLEInterface;
  Digest digest;
  QPSReader* handle =
      QPSAllocateReader(nullptr, nullptr, host.stream(), host.services(), nullptr, nullptr);
  const WorkMeter listing(host, limit);
  auto sheets = listSheets(host, handle, linkedReader());
  listing.check();
  if (sheets.empty()) readUpTo(mostItems, host, handle, 0, limit, digest);
  sheets.resize(std::min(sheets.size(), kMostSheets));
  for (const SSWorkSheetEntry& sheet : sheets) {
    digest.add(viewOf(sheet));
    readUpTo(mostItems, host, handle, sheet.startOffset, limit, digest);
  }
  QPSCloseReader(handle);
  require(host.state() == "clean", "nothing is left open, loaded or allocated");
  return digest.value();
}

}  // namespace qps::fuzz
