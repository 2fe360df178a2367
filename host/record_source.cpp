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
  container_ = ole_.openContainer(&file_, &services_.pool);
  if (container_ == nullptr) return Status::kBrokenContainer;
  for (const char* name : kNotebookStreams) {
    if (ole_.openStream(container_, name) == 0) continue;
    streamName_ = name;
    records_ = ole_.streamObject(container_);
    return records_ != nullptr ? Status::kOpen : Status::kBrokenContainer;
  }
  return Status::kOtherContainer;
}

bool RecordSource::hasStream(const char* name) {
  return container_ != nullptr && ole_.openStream(container_, name) != 0;
}

RecordSource::~RecordSource() {
  if (container_ != nullptr) ole_.closeContainer(container_);
  if (library_ != nullptr) services_.freeLibrary(&services_, library_);
  if (fileOpen_) file_.close(&file_);
}

RecordWalk::Step RecordWalk::next() {
  if (unreadBytes_ != 0 && stream_.seek(&stream_, unreadBytes_, SSSeekFromCurrent) == 0)
    return Step::kOverrun;
  unreadBytes_ = 0;
  std::array<unsigned char, 4> header;
  if (stream_.read(&stream_, header.data(), header.size()) != header.size()) return Step::kCutShort;
  record_ = {u16At(header.data()), u16At(header.data() + 2), nextOffset_};
  nextOffset_ += header.size() + record_.bodyBytes;
  unreadBytes_ = record_.bodyBytes;
  return record_.type == kEndRecord ? Step::kEnd : Step::kRecord;
}

std::uint16_t RecordWalk::firstValue() {
  std::array<unsigned char, 2> value{};
  if (unreadBytes_ < 2) return 0;
  const std::size_t got = stream_.read(&stream_, value.data(), value.size());
  unreadBytes_ -= static_cast<std::ptrdiff_t>(got);
  return got == value.size() ? u16At(value.data()) : std::uint16_t{0};
}

}  // namespace qps
