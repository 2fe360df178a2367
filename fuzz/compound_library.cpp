// SPDX-License-Identifier: MIT
//
// The compound-document library alone, through calls that the reader never makes: streams by any
// name, reads of any size, seeks to anywhere. The input: a byte of flags, sixteen operations, the
// file. Flag bit 0 gives the file the header of a sound document of version 3 (bit 1: 4), so that
// changed bytes reach what lies behind the header; bits 2 and 3 make the host fail now and then.
#include <iterator>

#include "fuzz/input_bytes.h"
#include "fuzz/session.h"
#include "tests/olefio/library_driver.h"

namespace {

using namespace qps::fuzz;

constexpr std::size_t kOperations = 16;
constexpr const char* kNames[] = {"PerfectOffice_MAIN",
                                  "NOVELL_MAIN",
                                  "novell_main",
                                  "Other",
                                  "",
                                  "A name of 32 characters, too long"};
constexpr std::size_t kPieces[] = {4, 1, 100, 5120, 8192, 20000, 64, 0};

// A container and the stream object that is valid in it.
class Visitor {
 public:
  Visitor(const RecordingHost& host, const OLEInterface& ole, void* container)
      : host_(host), ole_(ole), container_(container) {}

  void run(std::uint8_t operation, bool isSound) {
    const unsigned detail = operation >> 4;
    const unsigned call = operation & 15;
    const char* name = kNames[detail % std::size(kNames)];
    if (call <= 2) openStream(name);
    if (call == 3) ole_.closeStream(container_, name);
    if (call == 4) ole_.releaseStreamObject(container_);
    if (call == 3 || call == 4) stream_ = nullptr;
    if (call == 5) stream_ = ole_.streamObject(container_);
    if (stream_ == nullptr) return;
    if (call >= 6 && call <= 8) read(kPieces[detail % std::size(kPieces)]);
    if (call == 9) seek(detail * 100, SSSeekFromStart);
    if (call == 10) seek(static_cast<int>(detail) - 8, SSSeekFromCurrent);
    if (call == 11) {
      seek(detail % 2 == 0 ? PTRDIFF_MAX : PTRDIFF_MIN, static_cast<int>(detail / 2 % 3));
    }
    if (call == 12) stream_->open(stream_);
    if (call == 13) stream_->close(stream_);
    if (call >= 14 && isSound) compareReadings(detail % 2 == 0 ? 700 : 96 + detail);
  }

 private:
  void openStream(const char* name) {
    const WorkMeter work(host_, kCompoundWork);
    const bool opened = ole_.openStream(container_, name) != 0;
    work.check();
    stream_ = opened ? ole_.streamObject(container_) : nullptr;
    require(opened == (stream_ != nullptr), "an open stream has its object");
  }

  void read(std::size_t count) {
    std::vector<std::uint8_t> buffer(count + 1, 0x77);
    const std::ptrdiff_t from = stream_->tell(stream_);
    const std::size_t arrived = stream_->read(stream_, buffer.data(), count);
    require(arrived <= count, "no more than was asked for");
    require(buffer[count] == 0x77, "nothing beyond what was asked for");
    require(stream_->tell(stream_) == from + static_cast<std::ptrdiff_t>(arrived), "moves past it");
  }

  void seek(std::ptrdiff_t offset, std::int32_t origin) {
    const std::ptrdiff_t from = stream_->tell(stream_);
    const bool moved = stream_->seek(stream_, offset, origin) != 0;
    const std::ptrdiff_t base = origin == SSSeekFromCurrent ? from : 0;
    require(stream_->tell(stream_) == (moved ? base + offset : from), "a seek moves, or not");
  }

  // The bytes of a stream do not depend on how they are asked for. Sectors may be cut, not shared:
  // it has no more of them than the file.
  void compareReadings(std::size_t piece) {
    const auto readWhole = [&](std::size_t bytes) {
      require(stream_->open(stream_) != 0, "an object opens again");
      return readAll(stream_, {bytes});
    };
    const Bytes whole = readWhole(8192);
    require(whole.size() <= host_.file().bytes().size(), "a stream lies in the file");
    require(whole == readWhole(piece), "the same bytes every time");
  }

  const RecordingHost& host_;
  const OLEInterface& ole_;
  void* container_;
  SSStream* stream_ = nullptr;
};

// The fields without which nothing else is looked at.
void mendHeader(Bytes& file, unsigned version) {
  constexpr std::size_t kHeaderBytes = 512;
  file.resize(std::max(file.size(), kHeaderBytes));
  const Bytes signature = Body().u32(0xE011CFD0).u32(0xE11AB1A1).bytes();
  const Bytes fields = Body().u16(version).u16(0xFFFE).u16(version == 3 ? 9 : 12).u16(6).bytes();
  std::copy(signature.begin(), signature.end(), file.begin());
  std::copy(fields.begin(), fields.end(), file.begin() + 26);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputBytes input(data, size);
  const std::uint8_t flags = input.u8();
  const auto operations = input.take(kOperations);
  Bytes file = copyOf(input.rest());
  if ((flags & 1) != 0) mendHeader(file, (flags & 2) != 0 ? 4 : 3);

  RecordingHost host(std::move(file));
  host.seekBeyondEnd = (flags & 16) != 0;
  const bool isSound = (flags & 12) == 0;
  if (!isSound) {
    host.fail({.step = (flags & 4) != 0 ? Step::kPoolBlock : Step::kRead,
               .nth = 1U + (flags >> 4),
               .forGood = (flags & 8) != 0});
  }
  const OLEInterface ole = libraryTable();
  const WorkMeter work(host, kCompoundWork);
  void* container = ole.openContainer(host.stream(), &host.services()->pool);
  work.check();
  require((container != nullptr) == host.file().isOpen(),
          "the file is open while the container is");
  if (container != nullptr) {
    Visitor visitor(host, ole, container);
    for (const std::uint8_t operation : operations)
      visitor.run(operation, isSound);
    ole.closeContainer(container);
  }
  require(host.state() == "clean", "nothing is left open or allocated");
  return 0;
}
