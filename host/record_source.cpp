// SPDX-License-Identifier: MIT
//
// Opening the record stream through the same tables that the reader uses.
#include "host/record_source.hpp"

#include <array>
#include <cstring>

namespace qps {
namespace {

constexpr std::array<unsigned char, 4> kCompoundSignature = {0xD0, 0xCF, 0x11, 0xE0};
constexpr std::array<const char*, 2> kNotebookStreams = {"PerfectOffice_MAIN", "NOVELL_MAIN"};
constexpr std::uint16_t kEndRecord = 1;
constexpr std::size_t kHeaderBytes = 4;

std::uint16_t u16At(const unsigned char* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

}  // namespace

RecordSource::RecordSource(SSStream& file, HostServices& services)
    : file_(file), services_(services), status_(Status::kUnreadable) {
  if (file_.open(&file_) == 0) return;
  fileOpen_ = true;
  std::array<unsigned char, 4> begin{};
  const std::size_t got = file_.read(&file_, begin.data(), begin.size());
  if (got == begin.size() && begin == kCompoundSignature) {
    status_ = openContainer();
    return;
  }
  records_ = &file_;
  status_ = file_.seek(&file_, 0, SSSeekFromStart) != 0 ? Status::kOpen : Status::kUnreadable;
}

RecordSource::Status RecordSource::openContainer() {
  file_.close(&file_);  // the library opens it
  fileOpen_ = false;
  if (services_.loadLibrary(&services_, OLE_LIBRARY_NAME, &library_) == 0)
    return Status::kLibraryMissing;
  const auto getInterface = reinterpret_cast<GetOLEInterfaceFunction>(
      services_.getSymbol(&services_, library_, OLE_ENTRY_POINT));
  if (getInterface == nullptr) return Status::kLibraryMissing;
  getInterface(&ole_);
  const std::uint64_t refusalsBefore = services_.heapPool().refusals();
  const auto otherwise = [&](Status status) {
    return services_.heapPool().refusals() != refusalsBefore ? Status::kMemoryLimit : status;
  };
  container_ = ole_.openContainer(&file_, &services_.pool);
  if (container_ == nullptr) return otherwise(Status::kBrokenContainer);
  for (const char* name : kNotebookStreams) {
    if (ole_.openStream(container_, name) == 0) continue;
    streamName_ = name;
    records_ = ole_.streamObject(container_);
    return records_ != nullptr ? Status::kOpen : otherwise(Status::kBrokenContainer);
  }
  return otherwise(Status::kOtherContainer);
}

bool RecordSource::hasStream(const char* name) {
  return container_ != nullptr && ole_.openStream(container_, name) != 0;
}

RecordSource::~RecordSource() {
  if (container_ != nullptr) ole_.closeContainer(container_);
  if (library_ != nullptr) services_.freeLibrary(&services_, library_);
  if (fileOpen_) file_.close(&file_);
}

[[gnu::noinline]] bool RecordWalk::refill(std::size_t count) {
  std::memmove(block_.data(), block_.data() + cursor_, end_ - cursor_);
  end_ -= cursor_;
  cursor_ = 0;
  end_ += stream_.read(&stream_, block_.data() + end_, block_.size() - end_);
  return end_ >= count;
}

RecordWalk::Step RecordWalk::next() {
  const std::size_t held = end_ - cursor_;
  if (record_.bodyBytes <= held) {
    cursor_ += record_.bodyBytes;
  } else {
    const auto rest = static_cast<std::ptrdiff_t>(record_.bodyBytes - held);
    if (stream_.seek(&stream_, rest, SSSeekFromCurrent) == 0) return Step::kOverrun;
    cursor_ = end_ = 0;
  }
  if (!have(kHeaderBytes)) return Step::kCutShort;
  const unsigned char* const header = block_.data() + cursor_;
  record_ = {u16At(header), u16At(header + 2), nextOffset_};
  nextOffset_ += kHeaderBytes + record_.bodyBytes;
  cursor_ += kHeaderBytes;
  return record_.type == kEndRecord ? Step::kEnd : Step::kRecord;
}

std::uint16_t RecordWalk::firstValue() {
  if (record_.bodyBytes < 2 || !have(2)) return 0;
  return u16At(block_.data() + cursor_);
}

}  // namespace qps
