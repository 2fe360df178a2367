// SPDX-License-Identifier: MIT
//
// What only the reader over the compound-document library can show: that a notebook has the same
// items in a document as in a plain file, and that a hostile document does not make it ask for more
// than it accounts for. The first byte of the input chooses: 0 takes the rest as the document;
// anything else wraps the rest in a document of a shape that the byte chooses.
#include "fuzz/session.h"
#include "tests/support/compound_writer.h"

namespace {

using namespace qps::fuzz;

std::uint64_t visit(Bytes file, const WorkLimit& limit) {
  constexpr std::size_t kMostItems = 512;
  RecordingHost host(std::move(file));
  host.seekBeyondEnd = true;  // as streams in a container do
  return visitNotebook(host, kMostItems, limit);
}

Bytes wrap(std::uint8_t shape, const Bytes& notebook) {
  const CompoundOptions options{
      .version = shape % 8 == 7 ? 4U : 3U,  // large sectors make a target slow
      .sectors = static_cast<SectorOrder>(shape % 3),
      .siblings = static_cast<SiblingOrder>(shape / 3 % 3),
      .miniStreamCutoff = (shape & 32) != 0 ? 4096U : 0U,
  };
  const char* name = (shape & 64) != 0 ? "PerfectOffice_MAIN" : "NOVELL_MAIN";
  return writeCompound(options, {{"Other", {std::byte{1}}}, {name, notebook}});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Bytes rest = copyOf({data + 1, size - 1});
  if (data[0] == 0) {
    visit(rest, kCompoundWork);
    return 0;
  }
  const std::uint64_t wrapped = visit(wrap(data[0], rest), kCompoundWork);
  // What is no plain notebook on its own is not compared: a document in a document, and fewer bytes
  // than are looked at to tell.
  constexpr std::size_t kLookAheadBytes = 8;
  if (rest.size() >= kLookAheadBytes && rest[0] != std::byte{0xD0}) {
    require(visit(rest, kPlainWork) == wrapped, "the same items from a container");
  }
  return 0;
}
