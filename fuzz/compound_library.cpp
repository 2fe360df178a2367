// SPDX-License-Identifier: MIT
//
// The compound-document library alone. The input: a byte of flags, sixteen operations, the file.
// Flag bit 0 gives the file the header of a sound document of version 3 (bit 1: 4), so that changed
// bytes reach what lies behind the header; bits 2 and 3 make the host fail now and then.
#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "fuzz/input_bytes.h"
#include "fuzz/lean_host.h"
#include "fuzz/session.h"
#include "olefio/get_ole_interface.h"

namespace {

using namespace qps::fuzz;

constexpr size_t kOperations = 16;
constexpr const char* kNames[] = {"PerfectOffice_MAIN",
                                  "NOVELL_MAIN",
                                  "novell_main",
                                  "Other",
                                  "",
                                  "A name of 32 characters, too long"};
constexpr size_t kPieces[] = {4, 1, 100, 5120, 8192, 20000, 64, 0};

// A container and the stream object that is valid in it.
class Visitor {
 public:
  Visitor(LeanHost& host, const OLEInterface& ole, void* container)
      : host_(host), ole_(ole), container_(container) {}

  void run(uint8_t operation) {
    const uint8_t detail = operation >> 4;
    switch (operation & 15) {
      case 0:
      case 1:
      case 2:
        openStream(kNames[detail % std::size(kNames)]);
        break;
      case 3:
        ole_.closeStream(container_, kNames[detail % std::size(kNames)]);
        stream_ = nullptr;
        break;
      case 4:
        ole_.releaseStreamObject(container_);
        stream_ = nullptr;
        break;
      case 5:
        stream_ = ole_.streamObject(container_);
        break;
      case 6:
      case 7:
      case 8:
        read(kPieces[detail % std::size(kPieces)]);
        break;
      case 9:
        seek(detail * 100, SSSeekFromStart);
        break;
      case 10:
        seek(detail - 8, SSSeekFromCurrent);
        break;
      case 11:
        seek(detail % 2 == 0 ? PTRDIFF_MAX : PTRDIFF_MIN, detail / 2 % 3);
        break;
      case 12:
        if (stream_ != nullptr) stream_->open(stream_);
        break;
      case 13:
        if (stream_ != nullptr) stream_->close(stream_);
        break;
      default:
        compareReadings(detail);
        break;
    }
  }

 private:
  void openStream(const char* name) {
    stream_ = nullptr;
    const Work before = host_.work();
    const bool opened = ole_.openStream(container_, name) != 0;
    requireWork(host_, before, kCompoundWork);
    if (opened) stream_ = ole_.streamObject(container_);
    require(opened == (stream_ != nullptr), "an open stream has its object");
  }

  size_t read(size_t count) {
    if (stream_ == nullptr) return 0;
    std::vector<uint8_t> buffer(count + 1, 0x77);
    const ptrdiff_t from = stream_->tell(stream_);
    const size_t arrived = stream_->read(stream_, buffer.data(), count);
    require(arrived <= count, "no more than was asked for");
    require(buffer[count] == 0x77, "nothing beyond what was asked for");
    require(stream_->tell(stream_) == from + static_cast<ptrdiff_t>(arrived), "moves past it");
    return arrived;
  }

  void seek(ptrdiff_t offset, int32_t origin) {
    if (stream_ == nullptr) return;
    const ptrdiff_t from = stream_->tell(stream_);
    const bool moved = stream_->seek(stream_, offset, origin) != 0;
    const ptrdiff_t base = origin == SSSeekFromCurrent ? from : 0;
    require(stream_->tell(stream_) == (moved ? base + offset : from), "a seek moves, or not");
  }

  std::vector<uint8_t> readAll(size_t piece) {
    std::vector<uint8_t> all;
    require(stream_->open(stream_) != 0, "an object opens again");
    size_t arrived = 0;
    do {
      all.resize(all.size() + piece);
      arrived = stream_->read(stream_, all.data() + all.size() - piece, piece);
      all.resize(all.size() - piece + arrived);
      // Sectors may be cut, not shared: a stream has no more bytes than the file.
      require(all.size() <= host_.file().size(), "a stream lies in the file");
    } while (arrived == piece);
    return all;
  }

  // The bytes of a stream do not depend on how they are asked for.
  void compareReadings(uint8_t detail) {
    if (stream_ == nullptr || host_.faults[0].step != Step::kSteps) return;
    const auto whole = readAll(8192);
    require(whole == readAll(detail % 2 == 0 ? 700 : 96 + detail), "the same bytes every time");
  }

  LeanHost& host_;
  const OLEInterface& ole_;
  void* container_;
  SSStream* stream_ = nullptr;
};

void put16(std::vector<uint8_t>& file, size_t offset, uint16_t value) {
  file[offset] = static_cast<uint8_t>(value & 0xFF);
  file[offset + 1] = static_cast<uint8_t>(value >> 8);
}

// The fields without which nothing else is looked at.
void mendHeader(std::vector<uint8_t>& file, uint16_t version) {
  constexpr uint8_t kSignature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
  constexpr size_t kHeaderBytes = 512;
  file.resize(std::max(file.size(), kHeaderBytes));
  std::copy(std::begin(kSignature), std::end(kSignature), file.begin());
  put16(file, 26, version);
  put16(file, 28, 0xFFFE);
  put16(file, 30, version == 3 ? 9 : 12);
  put16(file, 32, 6);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  InputBytes input(data, size);
  const uint8_t flags = input.u8();
  const auto operations = input.take(kOperations);
  std::vector<uint8_t> file(input.rest().begin(), input.rest().end());
  if ((flags & 1) != 0) mendHeader(file, (flags & 2) != 0 ? 4 : 3);

  LeanHost host(file);
  host.seekBeyondEnd = (flags & 16) != 0;
  if ((flags & 12) != 0) {
    host.faults[0] = {.step = (flags & 4) != 0 ? Step::kPoolBlock : Step::kRead,
                      .nth = 1U + (flags >> 4),
                      .forGood = (flags & 8) != 0};
  }
  OLEInterface ole;
  GetOLEInterface(&ole);
  const Work before = host.work();
  void* container = ole.openContainer(host.stream(), host.pool());
  requireWork(host, before, kCompoundWork);
  require((container != nullptr) == host.isOpen(), "the file is open while the container is");
  if (container != nullptr) {
    Visitor visitor(host, ole, container);
    for (const uint8_t operation : operations)
      visitor.run(operation);
    ole.closeContainer(container);
  }
  host.requireAtRest();
  return 0;
}
